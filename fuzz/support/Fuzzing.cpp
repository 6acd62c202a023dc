// SPDX-License-Identifier: Apache-2.0
#include "support/Fuzzing.h"

#include <nuxo/tree/NuxoKeys.h>

#include <qv_cipr/qv_log_common.h>

#include <cstdio>
#include <cstdlib>

namespace fuzzing {

namespace {

constexpr uint32_t kAllClasses = 0x3f;

const std::map<std::string, uint32_t>& builtInKeys()
{
    static const std::map<std::string, uint32_t> keys = nuxo_key_map;
    return keys;
}

// Without the stand-in every line would cost system calls, and the system's log would be flooded.
bool standInIsReached()
{
    qv_log_common_debug(QV_LOG_INFO, "fuzz", "start");
    return linesLogged() > 0;
}

} // namespace

Run::Run() : mBuiltInKeys(builtInKeys())
{
    g_qv_log_common_level = kAllClasses;
    static const bool reached = standInIsReached();
    require(reached, "log lines reach the stand-in of the system logger");
}

Run::~Run()
{
    if (nuxo_key_map.size() == mBuiltInKeys.size()) return; // parsing only adds
    std::map<std::string, uint32_t> keys = mBuiltInKeys;
    NUXO::copyNuxoKeys(keys);
}

void require(bool holds, const char* rule)
{
    if (holds) return;
    std::fprintf(stderr, "Broken rule: %s\n", rule);
    std::abort();
}

Hush::Hush() : mLevel(g_qv_log_common_level)
{
    g_qv_log_common_level = 0;
}

Hush::~Hush()
{
    g_qv_log_common_level = mLevel;
}

} // namespace fuzzing
