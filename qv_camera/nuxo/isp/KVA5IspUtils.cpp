// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/formats/NUXOFormats.h>
#include <nuxo/isp/IspUtils.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

namespace NUXO {

namespace {

// The kernel that warps frames for video stabilisation.
constexpr uint32_t kDvsKernelUuid = 37235;

// Where a program group keeps the previous frame, which must look like the one that it delivers.
constexpr const char* kReferencePorts[] = {"tnr_output", "tnr_input"};

std::string nameForMessages(const IGraphConfig* port)
{
    return port == nullptr ? "NA" : nameOrFiledName(*port);
}

int findPeer(const IGraphConfig* port, IGraphConfig** peer)
{
    const int status = resolvePeer(port, peer);
    if (status != StatusOk) {
        NUXO_ERROR("couldn't find peer for %s, cannot apply format.", nameForMessages(port).c_str());
    }
    return status;
}

void reportRefusal(const IGraphConfig& port, const std::string& format)
{
    NUXO_ERROR("Couldn't set format %s for %s", format.c_str(), nameOrFiledName(port).c_str());
}

int setFormat(IGraphConfig& port, const std::string& format)
{
    const int status = port.setValue(NUXO_KEY_FORMAT, format);
    if (status != StatusOk) reportRefusal(port, format);
    return status;
}

bool isReferencePort(const IGraphConfig& port)
{
    const std::string name = nameOrFiledName(port);
    for (const char* const reference : kReferencePorts) {
        if (name == reference) return true;
    }
    return false;
}

// Collected before the first one is set, since the options of a format may add items.
std::vector<IGraphConfig*> referencePortsOf(const IGraphConfig& programGroup)
{
    std::vector<IGraphConfig*> ports;
    forEachOfType(&programGroup, kTypePort, [&ports](IGraphConfig& port) {
        if (isReferencePort(port)) ports.push_back(&port);
        return true;
    });
    return ports;
}

int applyToPeer(const IGraphConfig* port, const std::string& format)
{
    IGraphConfig* peer = nullptr;
    int status = findPeer(port, &peer);
    if (status != StatusOk) return status;
    status = peer->setValue(NUXO_KEY_FORMAT, format);
    if (status == StatusNotFound) return StatusOk; // the peer keeps its format
    if (status != StatusOk) reportRefusal(*peer, format);
    return status;
}

int compress(const IGraphConfig* port, const std::string& format)
{
    if (!NUXOFormats::isCompressedFormat(format)) {
        NUXO_ERROR("Trying to apply compression with non-compressed format %s", format.c_str());
        return StatusBadArgument;
    }
    IGraphConfig* peer = nullptr;
    int status = findPeer(port, &peer);
    if (status != StatusOk) return status;
    const IGraphConfig* const programGroup = peer->getAncestor();
    if (textOr(programGroup, NUXO_KEY_TYPE, "") != kTypeProgramGroup) return StatusBadState;
    for (IGraphConfig* const reference : referencePortsOf(*programGroup)) {
        status = setFormat(*reference, format);
        if (status != StatusOk) return status;
    }
    return setFormat(*peer, format);
}

} // namespace

int KVA5IspUtils::getKernelConfigurations(std::vector<KernelConfigContainer>& configs)
{
    if (mGraph == nullptr) {
        NUXO_ERROR("nuxo isp utils uninitialized");
        return StatusMissingData;
    }
    if (mVersion != GdfVersionKVA5 || isDvsEnabled()) return StatusOk;
    return unlessNoMemory<int>(StatusNoMemory, [&configs] {
        KernelConfigContainer config;
        config.valid = KernelConfigEnable;
        config.kernel_uuid = kDvsKernelUuid;
        config.enable = QV_ISP_ZMT_KERNEL_DISABLED;
        configs.push_back(config);
        return StatusOk;
    });
}

int KVA5IspUtils::applyFormat(const IGraphConfig* port, const std::string& format)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return applyToPeer(port, format); });
}

int KVA5IspUtils::applyCompression(const IGraphConfig* port, const std::string& format)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return compress(port, format); });
}

} // namespace NUXO
