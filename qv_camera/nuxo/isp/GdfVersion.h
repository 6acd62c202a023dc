// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_ISP_GDF_VERSION_H
#define NUXO_ISP_GDF_VERSION_H

namespace NUXO {

/// Generation of the image-processing unit that a graph descriptor is written for.
enum GdfVersion : int { GdfVersionNone = 0, GdfVersionKVA5 = 5, GdfVersionKVA6 = 6, GdfVersionKVA7 = 7 };

} // namespace NUXO

#endif
