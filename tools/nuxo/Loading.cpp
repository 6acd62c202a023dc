// SPDX-License-Identifier: Apache-2.0
#include "Loading.h"

#include "FileBytes.h"
#include "LibraryLog.h"
#include "XmlInspection.h"

#include <nuxo/parser/NUXOParser.h>

#include <cerrno>
#include <cstring>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

namespace NuxoTool {

namespace {

constexpr size_t kLongestMessage = 200; // a message may quote a piece of the document

bool startsWith(const std::string& text, const char* start)
{
    return text.compare(0, std::strlen(start), start) == 0;
}

// Why the file cannot be read, "" when it can.
std::string readingTrouble(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return std::string("cannot read: ") + std::strerror(errno);
    if (S_ISDIR(status.st_mode)) return "is a directory";
    if (!S_ISREG(status.st_mode)) return "is not a regular file";
    if (access(path.c_str(), R_OK) != 0) return std::string("cannot read: ") + std::strerror(errno);
    return "";
}

bool isGraphFileName(const std::string& path)
{
    const std::string suffix = suffixOf(path);
    return suffix == "xml" || suffix == "gz";
}

bool isReadable(const std::string& path, Findings& findings)
{
    const std::string trouble = readingTrouble(path);
    if (!trouble.empty()) {
        findings.error("cannot-read", inFile(path), trouble + "; expected a graph file", ExitCode::InputOutput);
        return false;
    }
    if (isGraphFileName(path)) return true;
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::string suffix =
        name.find('.') == std::string::npos ? "no suffix" : "the suffix '" + suffixOf(name) + "'";
    findings.error("file-type", inFile(path), "the file name has " + suffix + "; expected 'xml' or 'gz'");
    return false;
}

void checkRootElement(const GraphFile& file, DocumentKind kind, Findings& findings)
{
    const char* expected = "'graph_descriptor' or 'graph_settings'";
    bool fits = file.rootElement.empty() || file.isGraphFile(); // a document without elements is malformed
    if (kind == DocumentKind::Descriptor) {
        expected = "'graph_descriptor'";
        fits = fits && !file.isSettings();
    } else if (kind == DocumentKind::Settings) {
        expected = "'graph_settings'";
        fits = fits && !file.isDescriptor();
    }
    if (fits) return;
    findings.error("root-element", file.root,
                   "the document's element is '" + file.rootElement + "'; expected " + expected);
}

void reportWarning(const GraphFile& file, const std::string& text, Findings& findings)
{
    const Location where = file.rootElement.empty() ? inFile(file.path) : file.root;
    const bool isVersion = startsWith(text, "No version information");
    const std::string found = isVersion ? "element '" + file.rootElement + "' states no version" : text;
    findings.warning(isVersion ? "missing-version" : "parse", where,
                     found + (isVersion ? "; expected one, such as version=\"KVA7\"" : ""));
}

// The library says no more than that of a file whose names and places are in order. Without any memory it says nothing.
bool isLackOfMemory(const std::string& text)
{
    return startsWith(text, "Error while adding attribute");
}

void reportLibraryLines(const GraphFile& file, const XmlInspection& inspection, Findings& findings)
{
    const bool stopped = !inspection.complete; // a finding says so, with its place; the library's errors only repeat it
    bool reported = stopped;
    for (const LogLine& line : takeLibraryLog()) {
        const bool isOnlyTheEnd = startsWith(line.text, "Parser returned NULL");
        if (!line.isError) {
            reportWarning(file, line.text, findings);
        } else if (!reported && (isOnlyTheEnd ? inspection.hasElements : isLackOfMemory(line.text))) {
            throw std::bad_alloc();
        } else if (!isOnlyTheEnd) {
            if (!stopped) findings.error("parse", inFile(file.path), line.text.substr(0, kLongestMessage));
            reported = true;
        } else if (!reported) {
            findings.error("empty", file.root, "element '" + file.rootElement + "' is empty; expected elements in it");
        }
    }
}

} // namespace

GraphFile loadGraphFile(Session& session, const std::string& path, DocumentKind kind)
{
    Findings& findings = session.findings;
    const size_t errorsBefore = findings.errorCount();
    GraphFile file;
    file.path = path;
    if (!isReadable(path, findings)) return file;

    const XmlInspection inspection = inspectXml(path, findings);
    file.rootElement = inspection.rootElement;
    file.root = inspection.root;
    checkRootElement(file, kind, findings);
    if (inspection.isTooLarge) return file;

    takeLibraryLog();
    NUXO::IGraphConfig* tree = nullptr;
    NUXO::NUXOParser parser;
    parser.parseNUXOXmlFile(path.c_str(), &tree);
    file.tree.reset(tree);
    reportLibraryLines(file, inspection, findings);
    file.complete = findings.errorCount() == errorsBefore && file.tree != nullptr;
    return file;
}

GraphPair loadGraphPair(Session& session)
{
    GraphPair pair;
    pair.descriptor = loadGraphFile(session, session.arguments.descriptor, DocumentKind::Descriptor);
    pair.settings = loadGraphFile(session, session.arguments.settings, DocumentKind::Settings);
    if (pair.descriptor.isSettings() && pair.settings.isDescriptor()) {
        session.findings.note({}, "the two files look swapped; expected DESCRIPTOR before SETTINGS");
    }
    return pair;
}

} // namespace NuxoTool
