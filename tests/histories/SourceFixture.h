// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_HISTORIES_SOURCE_FIXTURE_H
#define NUXO_TESTS_HISTORIES_SOURCE_FIXTURE_H

#include "query/GraphFixture.h"
#include "records/Resolutions.h"

#include <string>
#include <utility>
#include <vector>

namespace graphtest {

using NUXO::ZmtTevUtils;
using Lines = std::vector<std::string>;

/// A sensor with all stages, and no two numbers that could be mistaken for each other. The sizes need not fit: nobody
/// compares them.
constexpr const char* kArray = R"(<pixel_array><input width="4224" height="3136" left="8" top="4"/>
                                  <output width="4208" height="3120"/></pixel_array>)";
constexpr const char* kBinner = R"(<binner h_factor="2" v_factor="2">
                                   <input width="4192" height="3104" left="16" top="10"/>
                                   <output width="2096" height="1552" left="4" top="2"/></binner>)";
constexpr const char* kScaler = R"(<scaler num_factor="1" denom_factor="2">
                                   <input width="2080" height="1540" left="11" top="6"/>
                                   <output width="1040" height="770" left="3" top="5"/></scaler>)";

/// What the sensor's port leads to. Its input crop differs on each side.
constexpr const char* kBackEnd = R"(<csi_be type="hw" name="csi_be"><in type="port" name="in" peer="sensor:port_0"/>
                                    <zmt_pixelformatter><input width="1036" height="766"
                                      left="7" top="9" right="13" bottom="17"/></zmt_pixelformatter>
                                    <output width="1020" height="740"/></csi_be>)";

/// A source by its name, with a port that leads to the back end.
inline std::string source(const std::string& name, const std::string& attributes, const std::string& body = "",
                          const std::string& portAttributes = "")
{
    return "<" + name + " " + attributes + ">" + body + R"(<port_0 type="port" name="port_0" peer="csi_be:in" )" +
           portAttributes + "/></" + name + ">";
}

inline std::string sensor(const std::string& stages)
{
    return source("sensor", R"(width="4000" height="3000")", stages);
}

/// Graphs around one source.
class SourceTest : public GraphTest {
protected:
    void load(const std::string& body)
    {
        mRoot = tree(body);
        clearLog();
    }

    /// The complete sensor and its back end.
    void loadSensor() { load(sensor(std::string(kArray) + kBinner + kScaler) + kBackEnd); }

    GraphConfigNode& node(const std::string& path) const { return path.empty() ? *mRoot : at(*mRoot, path); }

    /// Removes the item at @p path.
    void remove(const std::string& path) const
    {
        const auto [parent, name] = split(path);
        ASSERT_EQ(node(parent).removeDescendant(key(name)), StatusOk) << path;
    }

    /// Puts a number in place of whatever is at @p path.
    void replace(const std::string& path, int number) const
    {
        const auto [parent, name] = split(path);
        node(parent).removeDescendant(key(name));
        ASSERT_EQ(node(parent).addValue(key(name), number), StatusOk) << path;
    }

    /// Puts a text there, which no integer can be read from.
    void replaceByText(const std::string& path) const
    {
        const auto [parent, name] = split(path);
        node(parent).removeDescendant(key(name));
        ASSERT_EQ(node(parent).addValue(key(name), std::string("7")), StatusOk) << path;
    }

    Tree mRoot;

private:
    static std::pair<std::string, std::string> split(const std::string& path)
    {
        const size_t colon = path.rfind(':');
        if (colon == std::string::npos) return {"", path};
        return {path.substr(0, colon), path.substr(colon + 1)};
    }
};

} // namespace graphtest

#endif
