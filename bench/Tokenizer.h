// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_TOKENIZER_H
#define NUXO_BENCH_TOKENIZER_H

#include <string>

namespace bench {

/// The floor of parsing: the bare tokenizer with handlers that do nothing, fed in the chunks in which the library feeds it.
/// Throw std::runtime_error when the file cannot be tokenized.
void tokenizeFile(const std::string& path);
/// The same behind decompression.
void tokenizeCompressedFile(const std::string& path);

} // namespace bench

#endif
