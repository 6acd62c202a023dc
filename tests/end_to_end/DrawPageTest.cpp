// SPDX-License-Identifier: Apache-2.0
#include "Browser.h"
#include "ToolTest.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// What looks wrong in all views of every third setting: texts that leave their box or are cut, boxes that overlap.
constexpr const char* kLookForFaults = R"js((() => {
    const faults = [];
    const select = (id, value) => {
        const list = document.getElementById(id);
        list.value = value;
        list.dispatchEvent(new Event("change"));
    };
    const look = (where) => {
        const boxes = [];
        for (const node of document.querySelectorAll(".node")) {
            const size = node.querySelector(".body").getBBox();
            const at = node.transform.baseVal.consolidate().matrix;
            boxes.push({name: node.getAttribute("aria-label"), x: at.e, y: at.f, w: size.width, h: size.height});
            for (const text of node.querySelectorAll("text")) {
                const place = text.getBBox();
                const isInside = place.x >= 0 && place.x + place.width <= size.width && place.y >= -1 &&
                    place.y + place.height <= size.height + 1;
                if (!isInside) faults.push(`${where}: '${text.textContent}' leaves its box`);
                if (text.textContent.endsWith("\u2026")) faults.push(`${where}: '${text.textContent}' is cut`);
            }
        }
        boxes.forEach((a, i) => boxes.slice(i + 1).forEach((b) => {
            if (a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h)
                faults.push(`${where}: ${a.name} overlaps ${b.name}`);
        }));
        return boxes.length;
    };
    let looked = 0;
    for (const setting of [...document.getElementById("setting").options].filter((_, i) => i % 3 === 0)) {
        select("setting", setting.value);
        for (const view of document.getElementById("view").options) {
            select("view", view.value);
            looked += look(setting.textContent + ", " + view.textContent);
        }
    }
    return {faults, looked};
})())js";

// The least contrast of texts to what is behind them, as guidelines for accessible pages compute it.
constexpr const char* kLeastContrast = R"js((() => {
    const channels = (colour) => colour.match(/[\d.]+/g).slice(0, 3).map((c) => {
        const part = c / 255;
        return part <= 0.03928 ? part / 12.92 : Math.pow((part + 0.055) / 1.055, 2.4);
    });
    const luminance = (colour) => {
        const [r, g, b] = channels(colour);
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const contrast = (a, b) => {
        const [low, high] = [luminance(a), luminance(b)].sort((x, y) => x - y);
        return (high + 0.05) / (low + 0.05);
    };
    const style = (element) => getComputedStyle(element);
    let least = {ratio: 100, text: ""};
    const add = (element, front, back) => {
        const ratio = contrast(front, back);
        if (ratio < least.ratio) least = {ratio, text: element.textContent};
    };
    for (const node of document.querySelectorAll(".node")) {
        const head = style(node.querySelector(".head")).fill;
        for (const text of node.querySelectorAll(":scope > text")) add(text, style(text).fill, head);
        for (const port of node.querySelectorAll(".port"))
            for (const text of port.querySelectorAll("text")) add(text, style(text).fill, style(port.querySelector("rect")).fill);
    }
    for (const cluster of document.querySelectorAll(".cluster"))
        add(cluster, style(cluster.querySelector("text")).fill, style(cluster.querySelector("rect")).fill);
    for (const cell of document.querySelectorAll("#details td, #details p, #details h3, #details .go"))
        add(cell, style(cell).color, style(document.getElementById("details")).backgroundColor);
    return least;
})())js";

// The page in a browser, used as people use it.
class DrawPageTest : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        mBrowser = std::make_unique<Browser>(path(""));
        ASSERT_FALSE(HasFailure());
    }

    void TearDown() override
    {
        if (!HasFailure() && !mExpectsTroubles) expectNoTroubles();
        mBrowser.reset();
        ToolTest::TearDown();
    }

    // Whatever happened on the page: nothing was said on the console, and nothing but the page was asked for.
    void expectNoTroubles()
    {
        for (const std::string& trouble : mBrowser->troubles()) ADD_FAILURE() << trouble;
        for (const std::string& request : mBrowser->requests()) EXPECT_EQ(request, "file://" + path("page.html"));
        EXPECT_GE(mBrowser->requests().size(), 1U);
    }

    ToolRun draw(const std::vector<std::string>& arguments)
    {
        std::vector<std::string> all = {"draw", "--format", "html"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ToolRun result = run(all);
        write("page.html", result.out);
        return result;
    }

    void openExample(const std::string& generation, const std::string& fragment = "")
    {
        addExample(generation);
        const ToolRun result = draw({generation + "_descriptor.xml", generation + "_settings.xml"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        openPage(fragment);
    }

    void openPage(const std::string& fragment = "")
    {
        browser().open(path("page.html"), fragment);
        EXPECT_EQ(browser().text("document.body.dataset.ready"), "yes");
    }

    Browser& browser() { return *mBrowser; }

    std::string textOf(const std::string& selector)
    {
        return browser().text("document.querySelector('" + selector + "').textContent");
    }
    // What the elements that match say, in order.
    std::vector<std::string> textsOf(const std::string& selector)
    {
        return browser().evaluate("[...document.querySelectorAll('" + selector + "')].map((e) => e.textContent)");
    }
    size_t countOf(const std::string& selector)
    {
        return browser().evaluate("document.querySelectorAll('" + selector + "').length");
    }
    std::string heading() { return textOf("#details h2"); }
    std::string chosenIn(const std::string& select)
    {
        return browser().text("document.querySelector('#" + select + "').selectedOptions[0].textContent");
    }
    void choose(const std::string& select, const std::string& label)
    {
        browser().evaluate("(() => { const list = document.querySelector('#" + select + "');" +
                           "const label = " + Browser::Json(label).dump() +
                           ";"
                           "list.value = [...list.options].find((o) => o.textContent.startsWith(label)).value;"
                           "list.dispatchEvent(new Event('change')); })()");
    }
    // Names of the boxes that a class marks.
    std::set<std::string> boxesWith(const std::string& mark)
    {
        const std::vector<std::string> names = textsOf(".node." + mark + " > .name");
        return {names.begin(), names.end()};
    }
    // The value and the origin of an attribute in the details.
    std::pair<std::string, std::string> attribute(const std::string& name)
    {
        const Browser::Json row = browser().evaluate(
            "(() => { const row = [...document.querySelectorAll('#details tr')].find((r) => "
            "r.firstChild.textContent === '" +
            name + "'); return row ? [row.children[1].textContent, row.children[2].title] : ['', '']; })()");
        return {row[0], row[1]};
    }
    std::vector<double> camera()
    {
        return browser().evaluate("(() => { const m = document.querySelector('#world').transform.baseVal"
                                  ".consolidate().matrix; return [m.e, m.f, m.a]; })()");
    }

    bool mExpectsTroubles = false;

private:
    std::unique_ptr<Browser> mBrowser;
};

using Names = std::set<std::string>;

TEST_F(DrawPageTest, ShowsAllSettingsOfAFile)
{
    openExample("kva5");
    EXPECT_EQ(countOf("#setting option"), 30U); // as examples/README.md counts them
    EXPECT_EQ(textOf("#setting option"), "50100  1080p video, 720p preview");
    EXPECT_EQ(heading(), "setting 50100");
    EXPECT_EQ(textOf("h1"), "kva5_descriptor.xml  +  kva5_settings.xml");
}

TEST_F(DrawPageTest, ShowsBoxesPortsAndClusters)
{
    openExample("kva7", "setting=70101");
    // Three stages of the front, five blocks, five sinks; contexts 0, 1, 2, 4 and 8.
    EXPECT_EQ(countOf(".node"), 13U);
    EXPECT_EQ(textsOf(".cluster text"),
              (std::vector<std::string>{"context 0", "context 1", "context 2", "context 4", "context 8"}));
    // input, short_in, main_out, still_out, ae_out, awb_out, af_out
    EXPECT_EQ(
        browser().evaluate("[...document.querySelectorAll('.node')].find((n) => "
                           "n.querySelector('.name').textContent === 'cb_front').querySelectorAll('.port').length"),
        7);
    EXPECT_EQ(countOf(".port.off"), 6U); // raw_output twice, still_out, cv_out, dvs_out, aux_out
    EXPECT_EQ(countOf(".edge"), 14U);
}

TEST_F(DrawPageTest, SwitchesBetweenSettings)
{
    openExample("kva6");
    EXPECT_EQ(heading(), "setting 60100");
    choose("setting", "60206");
    EXPECT_EQ(heading(), "setting 60206");
    EXPECT_EQ(attribute("description").first, "full-size packed raw only");
    const std::vector<std::string> names = textsOf(".node > .name");
    EXPECT_EQ(Names(names.begin(), names.end()), (Names{"sensor", "csi_be", "raw_sink"}));
    browser().click("#picture");
    browser().press(">");
    EXPECT_EQ(chosenIn("setting").substr(0, 5), "60207");
    browser().press("<");
    browser().press("<");
    EXPECT_EQ(chosenIn("setting").substr(0, 5), "60205");
}

TEST_F(DrawPageTest, SearchFindsNodesPortsAndKernels)
{
    openExample("kva7", "setting=70101");
    browser().press("/");
    browser().type("TNR_BLEND");
    EXPECT_EQ(textOf("#found"), "1 found");
    EXPECT_EQ(boxesWith("match"), Names{"cb_vtnr"}); // which holds it
    browser().press("Enter");
    EXPECT_EQ(chosenIn("view"), "inside of stream 2");
    EXPECT_EQ(heading(), "cb_vtnr:tnr_blend");
    EXPECT_EQ(boxesWith("chosen"), Names{"tnr_blend"});
    EXPECT_EQ(textOf("#found"), "1 of 1");
}

TEST_F(DrawPageTest, EnterGoesThroughWhatWasFound)
{
    openExample("kva7", "setting=70101");
    browser().press("/");
    browser().type("_sink");
    EXPECT_EQ(textOf("#found"), "5 found"); // three of statistics, preview and video
    std::vector<std::string> seen;
    for (int i = 0; i < 6; ++i) {
        browser().press("Enter");
        seen.push_back(heading());
    }
    EXPECT_EQ(Names(seen.begin(), seen.end()),
              (Names{"ae_stats_sink", "af_stats_sink", "awb_stats_sink", "preview_sink", "video_sink"}));
    EXPECT_EQ(seen[5], seen[0]);
    browser().press("Enter", true);
    EXPECT_EQ(heading(), seen[4]);
    EXPECT_EQ(textOf("#found"), "5 of 5");
}

TEST_F(DrawPageTest, SearchFindsPorts)
{
    openExample("kva7", "setting=70101");
    browser().press("/");
    browser().type("short_in");
    browser().press("Enter");
    EXPECT_EQ(heading(), "cb_front:short_in");
    EXPECT_EQ(countOf(".port.chosen"), 1U);
    browser().type("x");
    EXPECT_EQ(textOf("#found"), "not found");
    EXPECT_EQ(countOf(".match"), 0U);
}

TEST_F(DrawPageTest, ClickShowsAttributesWithTheirOrigin)
{
    openExample("kva7", "setting=70101");
    const int index = browser().evaluate("[...document.querySelectorAll('.node')].findIndex((n) => "
                                         "n.querySelector('.name').textContent === 'cb_vtnr')");
    const std::string node = ".node[data-node=\"" + std::to_string(index) + "\"]";
    browser().click(node + " .name");
    EXPECT_EQ(heading(), "cb_vtnr");
    EXPECT_EQ(attribute("pg_id").first, "2002");
    browser().click(node + " .port.output rect");
    EXPECT_EQ(heading(), "cb_vtnr:main_out");
    // What the tool says elsewhere of the same value.
    const ToolRun build =
        run({"build", "kva7_descriptor.xml", "kva7_settings.xml", "--key", "70101", "--format", "json", "--origin"});
    const Browser::Json graph = Browser::Json::parse(build.out)["graph"];
    for (const Browser::Json& part : graph["children"]) {
        if (part["name"] != "cb_vtnr") continue;
        for (const Browser::Json& port : part["children"]) {
            if (port["name"] != "main_out") continue;
            for (const char* const name : {"width", "format", "peer"}) {
                const Browser::Json& value = port["attributes"][name];
                const Browser::Json& place = port["origins"][name];
                EXPECT_EQ(attribute(name).first, value.is_string() ? value.get<std::string>() : value.dump());
                EXPECT_EQ(attribute(name).second,
                          place["file"].get<std::string>() + ':' + place["line"].dump() + ':' + place["column"].dump());
            }
        }
    }
    EXPECT_EQ(attribute("width").first, "3840");
    browser().click("#details .go"); // the first: another view
    EXPECT_EQ(chosenIn("view"), "inside of stream 2");
    EXPECT_EQ(heading(), "cb_vtnr:main_out");
}

TEST_F(DrawPageTest, HighlightsThePathToASink)
{
    openExample("kva7", "setting=70101");
    choose("path", "video_sink");
    EXPECT_EQ(boxesWith("on-path"),
              (Names{"sensor", "csi_be", "csi_be_dol", "cb_front", "cb_vcolor", "cb_vtnr", "cb_vout", "video_sink"}));
    EXPECT_EQ(textOf("#route"), "sensor \xe2\x86\x92 csi_be_dol + csi_be \xe2\x86\x92 cb_front \xe2\x86\x92 cb_vcolor "
                                "\xe2\x86\x92 cb_vtnr \xe2\x86\x92 cb_vout \xe2\x86\x92 video_sink");
    // Eight connections from box to box, and the reference frame of cb_vtnr.
    EXPECT_EQ(countOf(".edge.on-path"), 9U);
    choose("path", "no path");
    EXPECT_EQ(countOf(".on-path"), 1U); // the legend's
    EXPECT_EQ(browser().evaluate("document.querySelector('#route').hidden"), true);
}

TEST_F(DrawPageTest, PathLeavesOutInputsThatDoNotFeedTheOutput)
{
    // In one node two chains lie side by side.
    write("two.xml", R"(<graph_descriptor version="KVA6"><nodes>
        <source name="tpg"><port name="port_0" id="0" direction="1" width="64" height="48"/><port name="port_1" id="1" direction="1" width="64" height="48"/></source>
        <program_group name="pair" stream_id="1" pg_id="1">
            <port name="in_a" id="0" direction="0"/><port name="in_b" id="1" direction="0"/>
            <port name="out_a" id="2" direction="1"/><port name="out_b" id="3" direction="1"/>
            <kernel name="one" id="0" pal_uuid="1"/><kernel name="two" id="1" pal_uuid="2"/>
            <klink source="in_a" destination="one:0"/><klink source="one:0" destination="out_a"/>
            <klink source="in_b" destination="two:0"/><klink source="two:0" destination="out_b"/>
        </program_group>
        <sink name="sink_a" stream_id="1"/><sink name="sink_b" stream_id="1"/>
        </nodes><graphs><graph id="1">
            <connection source="tpg:port_0" sink="pair:in_a"/><connection source="tpg:port_1" sink="pair:in_b"/>
            <connection source="pair:out_a" sink="sink_a"/><connection source="pair:out_b" sink="sink_b"/>
        </graph></graphs></graph_descriptor>)");
    write("two_settings.xml", R"(<graph_settings version="KVA6.1"><settings key="1" id="1">
        <tpg><port_0/><port_1/></tpg><pair><out_a/><out_b/></pair><sink_a/><sink_b/></settings></graph_settings>)");
    draw({"two.xml", "two_settings.xml"});
    openPage("path=sink_b");
    const std::vector<std::string> ports = textsOf(".port.on-path .name");
    EXPECT_EQ(Names(ports.begin(), ports.end()), (Names{"port_1", "in_b", "out_b"}));
}

TEST_F(DrawPageTest, EverythingCanBeDoneByKeyboard)
{
    openExample("kva7", "setting=70101");
    browser().evaluate("document.querySelector('#picture').focus()");
    const std::vector<double> before = camera();
    browser().press("+");
    EXPECT_GT(camera()[2], before[2]);
    browser().press("-");
    EXPECT_NEAR(camera()[2], before[2], 1e-9);
    browser().press("ArrowRight");
    EXPECT_NEAR(camera()[0], before[0] - 60, 1e-6);
    browser().press("0");
    EXPECT_NEAR(camera()[0], before[0], 1e-6);
    browser().press("Tab"); // to the first box
    ASSERT_EQ(browser().text("document.activeElement.getAttribute('class')"), "node")
        << browser().text("document.activeElement.outerHTML.slice(0, 200)");
    const std::string first = browser().text("document.activeElement.getAttribute('aria-label')");
    browser().press("Enter");
    EXPECT_EQ(heading(), first.substr(0, first.find(',')));
    browser().press("p");
    EXPECT_EQ(chosenIn("path"), heading());
    browser().press("Escape");
    EXPECT_EQ(heading(), "setting 70101");
    EXPECT_EQ(chosenIn("path"), "no path shown");
}

TEST_F(DrawPageTest, MouseMovesAndZooms)
{
    openExample("kva7", "setting=70101");
    const std::vector<double> before = camera();
    browser().drag(300, 700, 380, 730); // beside the boxes
    EXPECT_NEAR(camera()[0], before[0] + 80, 1);
    EXPECT_NEAR(camera()[1], before[1] + 30, 1);
    EXPECT_EQ(heading(), "setting 70101"); // and this was no click
    // What is below the pointer stays there.
    const double top = browser().evaluate("document.querySelector('#stage').getBoundingClientRect().top");
    const std::vector<double> moved = camera();
    browser().turnWheel(500, 400, -100);
    const std::vector<double> zoomed = camera();
    EXPECT_NEAR(zoomed[2], moved[2] * 1.25, 1e-6);
    EXPECT_NEAR((500 - zoomed[0]) / zoomed[2], (500 - moved[0]) / moved[2], 0.01);
    EXPECT_NEAR((400 - top - zoomed[1]) / zoomed[2], (400 - top - moved[1]) / moved[2], 0.01);
    browser().click("#fit");
    EXPECT_NEAR(camera()[2], before[2], 1e-9);
}

TEST_F(DrawPageTest, AddressKeepsWhatIsShown)
{
    openExample("kva6");
    choose("setting", "60106");
    choose("view", "inside of stream 1");
    browser().press("/");
    browser().type("nr");
    const std::string address = "setting=60106&stream=1&search=nr";
    std::string seen;
    for (int i = 0; i < 100 && seen != address; ++i) { // it follows after a moment
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        seen = browser().text("location.hash.slice(1)");
    }
    EXPECT_EQ(seen, address);
    openPage(address + "&chosen=vid_tnr%3Amain_out");
    EXPECT_EQ(chosenIn("setting").substr(0, 5), "60106");
    EXPECT_EQ(chosenIn("view"), "inside of stream 1");
    EXPECT_EQ(heading(), "vid_tnr:main_out");
    EXPECT_GT(countOf(".node.match"), 2U);
    browser().evaluate("location.hash = 'setting=60100&path=video_sink'"); // as typed into the address
    for (int i = 0; i < 100 && heading() != "setting 60100"; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(heading(), "setting 60100");
    EXPECT_EQ(chosenIn("path"), "video_sink");
    EXPECT_EQ(countOf(".node.match"), 0U);
}

TEST_F(DrawPageTest, StreamOptionSaysWhichInsideIsFirst)
{
    addExample("kva6");
    draw({"kva6_descriptor.xml", "kva6_settings.xml", "--key", "60100", "--stream", "3"});
    openPage();
    EXPECT_EQ(countOf("#setting option"), 1U);
    EXPECT_EQ(chosenIn("view"), "inside of stream 3");
}

TEST_F(DrawPageTest, NamesFromFilesStayText)
{
    // Names of kernels in the order of their ids and of nodes are free; this one tries to leave every place it gets to.
    const std::string evil =
        "&lt;/script>&lt;script>alert(1)&lt;/script>&#x2028;'\"]]>--&gt;&lt;img src=x onerror=alert(2)>";
    std::string odd = read("odd_names.xml");
    for (size_t at = odd.find("a&quot;b &lt;c&gt; &amp; \\d"); at != std::string::npos;
         at = odd.find("a&quot;b &lt;c&gt; &amp; \\d")) {
        std::string name = evil;
        name.replace(name.find('"'), 1, "&quot;");
        odd.replace(at, std::string("a&quot;b &lt;c&gt; &amp; \\d").size(), name);
    }
    write("odd_names.xml", odd);
    std::filesystem::create_directory(path("<"));
    write("</title><script>alert(3)<!--.xml", read("odd_names_settings.xml"));
    draw({"odd_names.xml", "</title><script>alert(3)<!--.xml"});
    openPage();
    EXPECT_EQ(countOf("script"), 2U);
    EXPECT_EQ(countOf("img"), 0U);
    const std::vector<std::string> labels = browser().evaluate(
        "[...document.querySelectorAll('.node')].map((n) => n.getAttribute('aria-label').split(', ')[0])");
    EXPECT_EQ(
        Names(labels.begin(), labels.end()),
        (Names{"tpg", "</script><script>alert(1)</script>\xe2\x80\xa8'\"]]>--><img src=x onerror=alert(2)>", "sink"}));
    EXPECT_EQ(browser().text("document.title"), "</title><script>alert(3)<!--.xml");
    browser().press("/");
    browser().type("onerror");
    browser().press("Enter");
    EXPECT_EQ(heading(), "</script><script>alert(1)</script>\xe2\x80\xa8'\"]]>--><img src=x onerror=alert(2)>");
}

TEST_F(DrawPageTest, NothingOverlapsOrIsCut)
{
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        openExample(generation);
        const Browser::Json seen = browser().evaluate(kLookForFaults);
        EXPECT_EQ(seen["faults"], Browser::Json::array()) << generation;
        EXPECT_GT(seen["looked"], 500) << generation; // ten settings with more than 50 boxes in all views
    }
}

TEST_F(DrawPageTest, TextsAreReadableInLightAndDark)
{
    // Sources, sinks, hardware, groups, ports that are off; then kernels and routing elements.
    openExample("kva7", "setting=70101");
    for (const char* const view : {"whole graph", "inside of stream 2"}) {
        choose("view", view);
        for (const char* const scheme : {"light", "dark"}) {
            browser().prefer(scheme);
            const Browser::Json least = browser().evaluate(kLeastContrast);
            EXPECT_GE(least["ratio"], 4.5) << view << ", " << scheme << ": " << least["text"];
        }
    }
    const std::string paper = "getComputedStyle(document.body).backgroundColor";
    EXPECT_EQ(browser().text(paper), "rgb(20, 24, 29)");
    browser().prefer("light");
    EXPECT_EQ(browser().text(paper), "rgb(255, 255, 255)");
}

TEST_F(DrawPageTest, PolicyAllowsNothingFromElsewhere)
{
    openExample("kva6");
    const std::string policy = browser().text("document.querySelector('meta[http-equiv]').getAttribute('content')");
    EXPECT_EQ(policy.substr(0, 40), "default-src 'none'; style-src 'sha256-" + policy.substr(38, 2));
    EXPECT_EQ(policy.find("unsafe"), std::string::npos);
    EXPECT_EQ(policy.find("http"), std::string::npos);
    // It is in force: a style that came in later is refused, and the browser says so.
    browser().evaluate("document.head.append(Object.assign(document.createElement('style'), "
                       "{textContent: 'body { display: none }'}))");
    EXPECT_EQ(browser().text("getComputedStyle(document.body).display"), "flex");
    ASSERT_EQ(browser().troubles().size(), 1U);
    EXPECT_NE(browser().troubles()[0].find("Content Security Policy"), std::string::npos);
    mExpectsTroubles = true;
}

} // namespace
