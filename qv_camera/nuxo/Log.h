// SPDX-License-Identifier: Apache-2.0
// Internal: log lines of the graph code. Arguments are evaluated only when the class is enabled.
#ifndef NUXO_LOG_H
#define NUXO_LOG_H

#include <qv_cipr/qv_log_common.h>

#include <cstdint>

namespace NUXO {

enum LogClass : uint32_t { LogInformation = 1, LogDebug = 2, LogEntry = 8, LogError = 16, LogWarning = 32 };

constexpr const char* kGraphTag = "NUXO[XOS]";

} // namespace NUXO

#define NUXO_LOG(level, tag, ...)                                                                                      \
    do {                                                                                                               \
        if ((g_qv_log_common_level & static_cast<uint32_t>(level)) != 0U)                                              \
            qv_log_common_debug(static_cast<uint32_t>(level), (tag), __VA_ARGS__);                                     \
    } while (false)

#define NUXO_INFORM(...) NUXO_LOG(::NUXO::LogInformation, ::NUXO::kGraphTag, __VA_ARGS__)
#define NUXO_DEBUG(...) NUXO_LOG(::NUXO::LogDebug, ::NUXO::kGraphTag, __VA_ARGS__)
#define NUXO_ERROR(...) NUXO_LOG(::NUXO::LogError, ::NUXO::kGraphTag, __VA_ARGS__)
#define NUXO_WARN(...) NUXO_LOG(::NUXO::LogWarning, ::NUXO::kGraphTag, __VA_ARGS__)

#endif
