// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_ANALYSIS_ANALYSIS_FIXTURE_H
#define NUXO_TESTS_ANALYSIS_ANALYSIS_FIXTURE_H

#include <nuxo/analysis/GraphUtil.h>

#include "camera/ContextFixture.h"

#include <memory>
#include <regex>
#include <set>
#include <string>

namespace graphtest {

using NUXO::GdfVersion;
using NUXO::GdfVersionKVA6;
using NUXO::GdfVersionKVA7;
using NUXO::GraphUtil;

inline const std::string kDoubleLine(55, '=');
inline const std::string kDashLine(55, '-');

inline std::string connection(const std::string& source, const std::string& sink)
{
    return "<connection source='" + source + "' sink='" + sink + "'/>";
}

inline std::string klink(const std::string& source, const std::string& destination)
{
    return "<klink source='" + source + "' destination='" + destination + "'/>";
}

/// A kernel whose id is its uuid.
inline std::string kernel(const std::string& name, int uuid, const std::string& attributes = "",
                          const std::string& body = "")
{
    const std::string number = std::to_string(uuid);
    return element("kernel", name, "id='" + number + "' pal_uuid='" + number + "' " + attributes, body);
}

/// The node that holds the connections, with a type of its own so that it is passed over in silence.
inline std::string graphOf(const std::string& connections)
{
    return "<node name='graph' type='graph'>" + connections + "</node>";
}

/// A source of memory frames, which needs no sensor mode, of 640 x 480.
inline std::string bufferSource(const std::string& peer, const std::string& attributes = "",
                                const std::string& name = "buffer_src0")
{
    return element("source", name, attributes, output("port_0", peer, "width='640' height='480'"));
}

/// buffer_src0 -> pg (in -> kernel k -> out) -> video. The source has no stream, everything else has stream 1 and context 2.
inline std::string smallGraph(const std::string& pgKind = "program_group")
{
    return bufferSource("pg:in") +
           element(pgKind, "pg", "stream_id='1' exec_ctx_id='2'",
                   input("in", "buffer_src0:port_0") + output("out", "video") + kernel("k", 11) + klink("in", "k:0") +
                       klink("k:0", "out")) +
           sink("video", "stream_id='1' exec_ctx_id='2' peer='pg:out'") +
           graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video"));
}

/// The same text with every address replaced.
inline std::string maskAddresses(const std::string& line)
{
    static const std::regex address("0x[0-9a-f]+");
    return std::regex_replace(line, address, "0x#");
}

/// Analyses of graphs that each test writes out, through the public interface.
class AnalysisTest : public ContextTest {
protected:
    AnalysisTest() : mUtil(std::make_unique<GraphUtil>()) {}

    int init(GdfVersion version = GdfVersionKVA6, unsigned int key = NUXO_KEY_STREAM_ID)
    {
        return mUtil->init(key, mRoot.get(), version);
    }

    std::set<int> availableSubgraphs() const
    {
        std::set<int> ids;
        mUtil->getAvailableSubgraphs(ids);
        return ids;
    }

    /// The recorded lines without the warnings about nodes that have no type, addresses replaced.
    Lines maskedLines() const
    {
        Lines all = linesBesideTypeWarnings();
        std::transform(all.begin(), all.end(), all.begin(), maskAddresses);
        return all;
    }

    /// Whether @p expected are among the recorded lines in this order, with whatever between them.
    ::testing::AssertionResult loggedInOrder(const Lines& expected) const
    {
        const Lines all = maskedLines();
        auto line = all.begin();
        for (const std::string& wanted : expected) {
            line = std::find(line, all.end(), wanted);
            if (line == all.end()) {
                ::testing::AssertionResult failure = ::testing::AssertionFailure();
                failure << "not logged, or not in this place: " << wanted << "\nlogged:";
                for (const std::string& logged : all) failure << "\n  " << logged;
                return failure;
            }
            ++line;
        }
        return ::testing::AssertionSuccess();
    }

    /// The recorded lines that start with @p start, such as "32 " for all warnings.
    Lines linesStarting(const std::string& start) const
    {
        Lines all = maskedLines();
        const auto starts = [&start](const std::string& line) { return line.rfind(start, 0) == 0; };
        all.erase(std::remove_if(all.begin(), all.end(), std::not_fn(starts)), all.end());
        return all;
    }

    std::unique_ptr<GraphUtil> mUtil;
};

} // namespace graphtest

#endif
