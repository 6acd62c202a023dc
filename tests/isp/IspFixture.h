// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_ISP_ISP_FIXTURE_H
#define NUXO_TESTS_ISP_ISP_FIXTURE_H

#include "camera/ContextFixture.h"

#include <memory>
#include <string>
#include <vector>

namespace graphtest {

using NUXO::IspUtils;
using NUXO::KernelConfigContainer;
using NUXO::KVA5IspUtils;

constexpr const char* kRestricted = "16 setValue() restricted to attributes that have predefined options";

/// The line about an attribute of `group:port` for which there is no list of options, or none with the value.
inline std::string noOptions(const std::string& port)
{
    return "32 Trying to apply value but no options list available for port[" + port + "].";
}

/// The options list of a port's format, with nothing to apply to other nodes.
inline std::string formats(const std::string& values)
{
    return "<options attribute='format'><o value='" + values + "'><apply/></o></options>";
}

/// A port whose format may become one of @p values.
inline std::string portWithFormats(const std::string& name, const std::string& values,
                                   const std::string& attributes = "")
{
    return element("port", name, "format='RAW' " + attributes, formats(values));
}

/// The port that is asked for, `pg:out`, connected to `next:in`.
inline std::string outPort(const std::string& attributes = "")
{
    return group("pg", "", output("out", "next:in", "format='RAW' " + attributes));
}

class IspTest : public ContextTest {
protected:
    std::string formatOf(const std::string& path) const { return value(*mRoot, path + ":format"); }
};

} // namespace graphtest

#endif
