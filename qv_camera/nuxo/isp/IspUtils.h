// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_ISP_ISP_UTILS_H
#define NUXO_ISP_ISP_UTILS_H

#include <qv_tools/qv_export.h>

#include <nuxo/isp/GdfVersion.h>
#include <nuxo/records/KernelConfigContainer.h>
#include <nuxo/tree/IGraphConfig.h>

#include <memory>
#include <string>
#include <vector>

namespace NUXO {

/// What differs between the generations of graphs. Operations that a generation lacks return StatusNotSupported.
class QV_EXPORT IspUtils {
public:
    /// The utilities of the generation that the graph's path graph:version names by containing "KVA5", "KVA6" or "KVA7", in
    /// this order; with none of them an object of version 0, which supports nothing.
    ///
    /// @param graph  the root of a built graph; not owned, keep it alive while the object is in use
    /// @return       empty for null and when memory is exhausted
    static std::shared_ptr<IspUtils> Factory(const IGraphConfig* graph);

    virtual ~IspUtils() = default;

    /// Whether the setting asks for video stabilisation: attribute `dvs`, false when absent; true without a graph.
    virtual bool isDvsEnabled() = 0;
    virtual GdfVersion getKvaVersion() = 0;

    /// Appends the changes that this generation makes to run-kernel records.
    ///
    /// @return StatusOk; StatusMissingData without a graph; StatusNotSupported; StatusNoMemory
    virtual int getKernelConfigurations(std::vector<KernelConfigContainer>& configs) = 0;

    /// Sets the `format` of the port's peer through its options list.
    ///
    /// @return StatusOk, also when the peer does not take the format (StatusNotFound); the status of
    ///         GraphCameraUtil::portGetPeer or of setting the value; StatusNotSupported; StatusNoMemory
    virtual int applyFormat(const IGraphConfig* port, const std::string& format) = 0;

    /// Sets a compressed format on the port's peer and on the reference ports tnr_output and tnr_input of the program group
    /// that the peer belongs to.
    ///
    /// @return StatusOk; StatusBadArgument for a format that is not compressed; the status of portGetPeer; StatusBadState
    ///         when the peer belongs to no program group; the status of the first format that could not be set;
    ///         StatusNotSupported; StatusNoMemory
    virtual int applyCompression(const IGraphConfig* port, const std::string& format) = 0;
};

/// Holds the graph (not owned) and its version.
class QV_EXPORT IspUtilsCommon : public IspUtils {
public:
    IspUtilsCommon() = default;
    IspUtilsCommon(const IGraphConfig* graph, GdfVersion version) : mGraph(graph), mVersion(version) {}

    bool isDvsEnabled() override;
    GdfVersion getKvaVersion() override;

protected:
    const IGraphConfig* mGraph = nullptr;
    GdfVersion mVersion = GdfVersionNone;
};

/// What the generations share that support none of the operations.
class QV_EXPORT UnsupportingIspUtils : public IspUtilsCommon {
public:
    using IspUtilsCommon::IspUtilsCommon;
    int getKernelConfigurations(std::vector<KernelConfigContainer>& configs) override;
    int applyFormat(const IGraphConfig* port, const std::string& format) override;
    int applyCompression(const IGraphConfig* port, const std::string& format) override;
};

/// Graphs of no known generation.
class QV_EXPORT KVA4IspUtils : public UnsupportingIspUtils {
public:
    using UnsupportingIspUtils::UnsupportingIspUtils;
};

/// Generation 5: the kernel of video stabilisation is disabled unless the setting asks for it.
class QV_EXPORT KVA5IspUtils : public IspUtilsCommon {
public:
    using IspUtilsCommon::IspUtilsCommon;
    int getKernelConfigurations(std::vector<KernelConfigContainer>& configs) override;
    int applyFormat(const IGraphConfig* port, const std::string& format) override;
    int applyCompression(const IGraphConfig* port, const std::string& format) override;
};

/// Generation 6.
class QV_EXPORT KVA6IspUtils : public UnsupportingIspUtils {
public:
    using UnsupportingIspUtils::UnsupportingIspUtils;
};

/// Generation 7.
class QV_EXPORT KVA7IspUtils : public UnsupportingIspUtils {
public:
    using UnsupportingIspUtils::UnsupportingIspUtils;
};

} // namespace NUXO

#endif
