// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_KERNELS_ZMT_TEV_UTILS_ACCESS_H
#define NUXO_TESTS_KERNELS_ZMT_TEV_UTILS_ACCESS_H

#include <nuxo/nuxo.h>

namespace NUXO {

/// The single steps of the kernel utilities and what they keep. The steps are hidden in the shared library: programs that
/// take them link its objects.
struct ZmtTevUtilsAccess {
    using StreamChains = ZmtTevUtils::StreamChains;

    static void deleteKernelInfo(ZmtTevUtils& utils) { utils.deleteKernelInfo(); }
    static int createKernelListStructures(ZmtTevUtils& utils) { return utils.createKernelListStructures(); }
    static int createPerPgKernelListStructures(ZmtTevUtils& utils, const IGraphConfig* pgNode, unsigned int kernelCount)
    {
        return utils.createPerPgKernelListStructures(pgNode, kernelCount);
    }
    static int getStreamChains(ZmtTevUtils& utils, StreamChains& chains)
    {
        return utils.getStreamChains(utils.indexStreams(), chains);
    }
    static int getResHistoryForIntermediatePg(const ZmtTevUtils& utils, const IGraphConfig* pg,
                                              const ZmtTevUtils::PortHistories& portHistories,
                                              qv_isp_zmt_resolution_info& history)
    {
        return utils.getResHistoryForIntermediatePg(pg, portHistories, history);
    }

    static auto& indexMap(ZmtTevUtils& utils) { return utils.mIndexMap; }
    static auto& pools(ZmtTevUtils& utils) { return utils.mPools; }
    static auto& pgMap(ZmtTevUtils& utils) { return utils.mPgMap; }
    static auto& execCtxMap(ZmtTevUtils& utils) { return utils.mExecCtxMap; }
    static auto& sourceHistory(ZmtTevUtils& utils) { return utils.mSourceHistory; }
    static auto& inputHistory(ZmtTevUtils& utils) { return utils.mInputHistory; }
    static auto& root(ZmtTevUtils& utils) { return utils.mRoot; }
    static auto& version(ZmtTevUtils& utils) { return utils.mVersion; }
    static auto& ispUtils(ZmtTevUtils& utils) { return utils.mIspUtils; }
};

} // namespace NUXO

#endif
