// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_QV_CIPR_TRACE_MARKER_FAKE_H
#define NUXO_TESTS_QV_CIPR_TRACE_MARKER_FAKE_H

#include <atomic>

/// Stands in for the kernel's trace marker file: the test program has an open() of its own, which gives out
/// `descriptor` for the marker's path and passes every other path on to the system. Its snprintf() can be made to fail,
/// which the system's does only for records of more than 2^31 characters.
struct TraceMarkerFake {
    /// What opening the marker returns; -1 for a marker that is not there.
    static std::atomic<int> descriptor;
    /// How often the marker was opened, and with which flags the last time.
    static std::atomic<int> opened;
    static std::atomic<int> flags;
    /// Whether formatting a record fails.
    static std::atomic<bool> formattingFails;
};

#endif
