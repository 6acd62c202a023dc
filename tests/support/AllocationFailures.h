// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_SUPPORT_ALLOCATION_FAILURES_H
#define NUXO_TESTS_SUPPORT_ALLOCATION_FAILURES_H

#include <cstddef>
#include <cstdint>

/// Whether @p action lets an exception out.
template <class Action> bool escapes(Action&& action)
{
    try {
        action();
    } catch (...) {
        return true;
    }
    return false;
}

/// Makes allocations of the program under test fail, and counts those that are alive. A program that links
/// nuxo-test-allocations gets global operator new and delete of its own, for the library as well as for itself.
///
/// Failures hit every thread and also the test's own allocations: switch them off before asserting. They are off as
/// soon as the object is gone.
class AllocationFailures {
public:
    AllocationFailures();
    ~AllocationFailures();
    AllocationFailures(const AllocationFailures&) = delete;
    AllocationFailures& operator=(const AllocationFailures&) = delete;

    /// Only the @p n-th C++ allocation from now fails, counting from 1.
    void failOnce(size_t n);
    /// The @p n-th C++ allocation from now and all after it fail, counting from 1.
    void failFrom(size_t n);
    /// The @p n-th allocation of the counted C allocator from now and all after it fail, counting from 1.
    void failCountedFrom(uint32_t n);
    /// No allocation fails any more, of either kind.
    void stop();

    /// C++ allocations that have been made to fail since the last failOnce or failFrom.
    size_t failures() const;

    /// C++ allocations that have not been released, in the whole program.
    static size_t live();
    /// C++ allocations asked for since the program started, in the whole program.
    static size_t attempts();

    /// Runs @p action with its first C++ allocation failing (only that one, or with @p forGood also all later ones),
    /// then with the second, and so on, until it asks for fewer allocations than that. After each run @p check is
    /// called with failures switched off.
    ///
    /// @return number of runs in which an allocation failed
    template <class Action, class Check> size_t sweep(bool forGood, Action&& action, Check&& check)
    {
        for (size_t n = 1;; ++n) {
            if (forGood) {
                failFrom(n);
            } else {
                failOnce(n);
            }
            action();
            const bool reached = failures() > 0;
            stop();
            check();
            if (!reached) return n - 1;
        }
    }

private:
    uint32_t mCountedBefore;
};

#endif
