// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "Texts.h"
#include "Trees.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <pugixml.hpp>

namespace bench {

namespace {

constexpr size_t kSettings = 3663;
constexpr int kSamples = 21;
constexpr size_t kOurRuns = 20;
constexpr const char* kXPath =
    "/graph_settings/settings[main_pg/output/@width='1920' and main_pg/output/@height='1080']";

using Keys = std::vector<int>; // of the settings that match

Keys sorted(Keys keys)
{
    std::sort(keys.begin(), keys.end());
    return keys;
}

// The query through the library.
class OurQuery {
public:
    explicit OurQuery(std::string& text) : mSettings(parseText(text)), mDescriptor(parseText(kDescriptor))
    {
        mManager.setGraphSettings(mSettings.get());
        mManager.setGraphDescriptor(mDescriptor.get());
        mCriteria = {{"main_pg:output:width", "1920"}, {"main_pg:output:height", "1080"}};
    }

    void run()
    {
        mFound.clear();
        static_cast<void>(mManager.queryGraphs(mCriteria, mFound, true)); // the answers are compared
    }

    Keys keys() const
    {
        Keys keys;
        for (const NUXO::IGraphConfig* const node : mFound) {
            int key = 0;
            if (node->getValue(NUXO_KEY_KEY, key) == StatusOk) keys.push_back(key);
        }
        return sorted(keys);
    }

private:
    static inline std::string kDescriptor = "<graph_descriptor version=\"KVA6\"><nodes/></graph_descriptor>";

    Tree mSettings;
    Tree mDescriptor;
    NUXO::GraphQueryManager mManager;
    std::map<NUXO::ItemUID, std::string> mCriteria;
    std::vector<NUXO::IGraphConfig*> mFound;
};

// The same through a compiled expression over a parsed document.
class Libxml2Query {
public:
    explicit Libxml2Query(const std::string& text)
        : mDocument(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, 0)),
          mContext(mDocument == nullptr ? nullptr : xmlXPathNewContext(mDocument.get())),
          mExpression(xmlXPathCompile(asXml(kXPath)))
    {
        if (mContext == nullptr || mExpression == nullptr) throw std::runtime_error("libxml2 cannot be set up");
    }

    void run() { mFound.reset(xmlXPathCompiledEval(mExpression.get(), mContext.get())); }

    Keys keys() const
    {
        Keys keys;
        for (int i = 0; mFound != nullptr && i < xmlXPathNodeSetGetLength(mFound->nodesetval); ++i) {
            xmlChar* const key = xmlGetProp(mFound->nodesetval->nodeTab[i], asXml("key"));
            keys.push_back(std::stoi(reinterpret_cast<const char*>(key)));
            xmlFree(key);
        }
        return sorted(keys);
    }

private:
    struct Deleter {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
        void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
        void operator()(xmlXPathCompExpr* expression) const { xmlXPathFreeCompExpr(expression); }
        void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
    };

    static const xmlChar* asXml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

    std::unique_ptr<xmlDoc, Deleter> mDocument;
    std::unique_ptr<xmlXPathContext, Deleter> mContext;
    std::unique_ptr<xmlXPathCompExpr, Deleter> mExpression;
    std::unique_ptr<xmlXPathObject, Deleter> mFound;
};

class PugixmlQuery {
public:
    explicit PugixmlQuery(const std::string& text) : mExpression(kXPath)
    {
        if (!mDocument.load_buffer(text.data(), text.size())) throw std::runtime_error("pugixml cannot be set up");
    }

    void run() { mFound = mExpression.evaluate_node_set(mDocument); }

    Keys keys() const
    {
        Keys keys;
        for (const pugi::xpath_node& found : mFound) keys.push_back(found.node().attribute("key").as_int());
        return sorted(keys);
    }

private:
    pugi::xml_document mDocument;
    pugi::xpath_query mExpression;
    pugi::xpath_node_set mFound;
};

template <typename Peer>
void measure(Context& context, benchmark::State& state, const std::string& peerName, const Limit& limit)
{
    std::string text = settingsFile(kSettings);
    OurQuery ours(text);
    Peer peer(text);
    ours.run();
    peer.run();
    if (ours.keys().empty() || ours.keys() != peer.keys()) throw std::runtime_error("the answers differ");
    const Side ourSide = {[&ours] { ours.run(); }, [] {}, kOurRuns};
    const Side peerSide = {[&peer] { peer.run(); }};
    const Comparison result = compare(state, ourSide, peerSide);
    state.counters["matches"] = static_cast<double>(ours.keys().size());
    context.bars.add("query of 3,663 settings, times as fast as " + peerName, 1 / result.ratio, limit);
}

} // namespace

void addQueryBenchmarks(Context& context)
{
    add(context, "query/libxml2", kSamples, [&context](benchmark::State& state) {
        measure<Libxml2Query>(context, state, "libxml2 XPath", atLeast(5, 10));
    });
    add(context, "query/pugixml", kSamples,
        [&context](benchmark::State& state) { measure<PugixmlQuery>(context, state, "pugixml XPath", atLeast(1, 2)); });
}

} // namespace bench
