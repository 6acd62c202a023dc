// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GZIP_TAIL_H
#define NUXO_TOOL_GZIP_TAIL_H

#include <cstdint>
#include <string>

namespace NuxoTool {

/// How many bytes stand behind the compressed text of a gzip file, where nobody reads them; 0 when the file is damaged.
/// Decompresses the whole file, without keeping any of it; of very many bytes not all are counted.
uint64_t bytesBehindText(const std::string& path);

} // namespace NuxoTool

#endif
