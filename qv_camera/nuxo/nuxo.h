// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_NUXO_H
#define NUXO_NUXO_H

// The one header a client includes. A request runs top to bottom.
#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/GraphConfigAttribute.h>
#include <nuxo/tree/GraphConfigItem.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/IGraphConfig.h>
#include <nuxo/tree/ItemUID.h>
#include <nuxo/tree/NodeIterator.h>
#include <nuxo/tree/NuxoKeys.h>
#include <nuxo/tree/SourcePosition.h>
#include <nuxo/parser/NUXOParser.h>
#include <nuxo/parser/SourceLocator.h>
#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/formats/NUXOFormats.h>
#include <nuxo/formats/dec400util.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/isp/IspUtils.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/frame_params/GraphLumUtil.h>
#include <nuxo/simulation/ZmtTevSimUtils.h>

#endif
