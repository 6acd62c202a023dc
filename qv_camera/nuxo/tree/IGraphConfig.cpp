// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/IGraphConfig.h>

namespace NUXO {

IGraphConfig::~IGraphConfig() = default;

} // namespace NUXO
