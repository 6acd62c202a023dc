// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_SIMULATION_SIMULATION_FIXTURE_H
#define NUXO_TESTS_SIMULATION_SIMULATION_FIXTURE_H

#include <nuxo/simulation/ZmtTevSimUtils.h>

#include "query/ForeignNode.h"
#include "query/GraphFixture.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace graphtest {

using NUXO::ZmtTevSimUtils;
using KernelList = std::vector<ZmtTevSimUtils::KernelInfo>;

/// A line with the tag of the simulation helpers, written "level message".
inline std::string sim(const std::string& line)
{
    return "NUXO_TEV_SIMULATION_UTILS[XOS]/" + line;
}

/// The kernels in order as "name=uuid name=uuid".
inline std::string text(const KernelList& kernels)
{
    std::string all;
    for (const auto& kernel : kernels) {
        all += (all.empty() ? "" : " ") + kernel.name + "=" + std::to_string(kernel.pal_uuid);
    }
    return all;
}

/// The names of the nodes in alphabetical order, joined by blanks; the set itself is ordered by address.
inline std::string names(const std::set<IGraphConfig*>& nodes)
{
    std::set<std::string> sorted;
    for (const IGraphConfig* node : nodes) sorted.insert(node->getName());
    std::string all;
    for (const std::string& name : sorted) all += (all.empty() ? "" : " ") + name;
    return all;
}

/// A root of another implementation of the interface with given children.
class ForeignRoot : public ForeignNode {
public:
    explicit ForeignRoot(std::map<uint32_t, IGraphConfig*> children) : mChildren(std::move(children)) {}

    IGraphConfig* getRoot() const override { return const_cast<ForeignRoot*>(this); }
    IGraphConfig* getDescendant(uint32_t wanted) const override
    {
        const auto found = mChildren.find(wanted);
        return found == mChildren.end() ? nullptr : found->second;
    }

private:
    std::map<uint32_t, IGraphConfig*> mChildren;
};

} // namespace graphtest

#endif
