// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_QV_CIPR_SCOPED_ENVIRONMENT_H
#define NUXO_TESTS_QV_CIPR_SCOPED_ENVIRONMENT_H

#include <qv_cipr/qv_log_common.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

/// The environment variables of the log, all absent at first, and the globals that they steer; both are as if nothing
/// had happened when the object goes away.
class ScopedEnvironment {
public:
    ScopedEnvironment()
    {
        clear();
        std::copy(std::begin(g_qv_log_dump_path), std::end(g_qv_log_dump_path), mDumpPath.begin());
    }

    ~ScopedEnvironment()
    {
        clear();
        std::copy(mDumpPath.begin(), mDumpPath.end(), std::begin(g_qv_log_dump_path));
        g_qv_log_common_level = mLevel;
        g_qv_trace_level = mTraceLevel;
    }

    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    void set(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }

private:
    static void clear()
    {
        unsetenv("camera_css_debug");
        unsetenv("camera_css_debug_dump_path");
        unsetenv("camera_css_trace");
        unsetenv("camera_test_number");
    }

    uint32_t mLevel = g_qv_log_common_level;
    uint32_t mTraceLevel = g_qv_trace_level;
    std::array<char, QV_LOG_DUMP_PATH_SIZE> mDumpPath{};
};

#endif
