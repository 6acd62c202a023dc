// SPDX-License-Identifier: Apache-2.0
#include "FileBytes.h"
#include "FileReplacing.h"
#include "Loading.h"
#include "Text.h"
#include "format/CanonicalForm.h"
#include "format/TreeComparison.h"
#include "format/XmlTokens.h"
#include "verbs/Verbs.h"

#include <algorithm>
#include <new>
#include <optional>
#include <vector>

namespace NuxoTool {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

// The whole text of a file that could be read a moment ago.
std::optional<std::string> readText(const std::string& path, Findings& findings)
{
    FileBytes bytes(path);
    std::string text;
    std::vector<char> piece(FileBytes::kPieceSize);
    while (const size_t count = bytes.read(piece.data())) text.append(piece.data(), count);
    if (bytes.trouble().empty()) return text;
    findings.error("cannot-read", inFile(path), "cannot read: " + bytes.trouble() + "; expected a graph file",
                   ExitCode::InputOutput);
    return std::nullopt;
}

// What an XML declaration says, "" without any.
std::string_view declaredEncoding(std::string_view text)
{
    const size_t start = startsWith(text, kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::string_view declaration = text.substr(start, text.find("?>"));
    if (!startsWith(declaration, "<?xml") || kXmlBlanks.find(declaration[5]) == std::string_view::npos) return "";
    for (const XmlTokenAttribute& attribute : tagAttributes(declaration)) {
        if (attribute.name == "encoding") return attribute.value.substr(1, attribute.value.size() - 2);
    }
    return "";
}

// Its name when the text is not in UTF-8, "" otherwise.
std::string foreignEncoding(std::string_view text)
{
    const std::string_view start = text.substr(0, 2);
    if (start == "\xff\xfe" || start == "\xfe\xff" || start.find('\0') != std::string_view::npos) return "UTF-16";
    const std::string_view declared = declaredEncoding(text);
    const std::string lower = lowerCase(declared);
    return lower.empty() || lower == "utf-8" || lower == "us-ascii" ? "" : std::string(declared);
}

struct FormattedFile {
    std::string path;
    std::string text;
    std::string canonical;
};

// Nothing when a finding says why.
std::optional<FormattedFile> formatFile(Session& session, const std::string& path)
{
    Findings& findings = session.findings;
    if (!loadGraphFile(session, path, DocumentKind::Any).complete) return std::nullopt;
    std::optional<std::string> text = readText(path, findings);
    if (!text) return std::nullopt;
    const std::string encoding = foreignEncoding(*text);
    if (!encoding.empty()) {
        findings.error("fmt-encoding", inFile(path),
                       "the file is encoded in " + printable(encoding) + "; expected UTF-8");
        return std::nullopt;
    }
    FormattedFile file{path, std::move(*text), ""};
    file.canonical = canonicalForm(file.text);
    if (meansTheSame(file.text, file.canonical)) return file;
    if (!meansTheSame(file.text, file.text))
        throw std::bad_alloc(); // nothing else can be in the way of reading it again
    findings.error("internal", inFile(path), "the canonical form means something else; nothing was written",
                   ExitCode::Internal);
    return std::nullopt;
}

Location firstDifference(const FormattedFile& file)
{
    const auto end = std::mismatch(file.text.begin(), file.text.end(), file.canonical.begin(), file.canonical.end());
    const auto line = static_cast<uint32_t>(std::count(file.text.begin(), end.first, '\n')) + 1;
    const size_t at = static_cast<size_t>(end.first - file.text.begin());
    const size_t lineStart = at == 0 ? 0 : file.text.rfind('\n', at - 1) + 1;
    Location place = inFile(file.path);
    place.line = line;
    place.column = static_cast<uint32_t>(at - lineStart + 1);
    return place;
}

void checkFile(Session& session, const FormattedFile& file)
{
    if (file.text == file.canonical) return;
    session.output += printable(file.path) + '\n';
    session.findings.error("not-canonical", firstDifference(file),
                           "not in canonical form from here on; expected what 'nuxo fmt' writes");
}

void rewriteFile(Session& session, const FormattedFile& file)
{
    if (file.text == file.canonical) return;
    const std::string trouble = replaceFile(file.path, file.canonical);
    if (trouble.empty()) return;
    session.findings.error("cannot-write", inFile(file.path), "cannot write: " + trouble, ExitCode::InputOutput);
}

} // namespace

void runFmt(Session& session)
{
    const Arguments& arguments = session.arguments;
    if (arguments.files.size() > 1 && !arguments.inPlace && !arguments.checkOnly) {
        session.findings.error("usage", {}, "several files; expected one, or --in-place or --check", ExitCode::Usage);
        return;
    }
    for (const std::string& path : arguments.files) {
        const std::optional<FormattedFile> file = formatFile(session, path);
        if (!file) continue;
        if (arguments.checkOnly) {
            checkFile(session, *file);
        } else if (arguments.inPlace) {
            rewriteFile(session, *file);
        } else {
            session.output = file->canonical;
        }
    }
}

} // namespace NuxoTool
