// SPDX-License-Identifier: Apache-2.0
// The table entries of what is found while files are read; the code there makes the findings.
#include "check/Rule.h"

namespace NuxoTool {

std::vector<Rule> readingRules()
{
    return {
        {"cannot-read",
         RuleSeverity::Error,
         "a file that cannot be opened or read",
         "The file is not there, is a folder, or may not be read. The rest of the check goes without it. Look at the "
         "path and at the rights of the file.",
         {},
         NoRule()},
        {"file-type",
         RuleSeverity::Error,
         "a file name that ends in neither .xml nor .gz",
         "The library decides by the end of the name how to read a file: .xml for plain XML, .gz for XML compressed "
         "with gzip, both in lower case. It refuses all others. Rename the file.",
         {},
         NoRule()},
        {"damaged",
         RuleSeverity::Error,
         "a compressed file that ends early or is broken",
         "Decompression stopped before the end of the document. The library would go on with the part before the "
         "damage as if it were all. Compress the file again: gzip -9nc graph.xml > graph.xml.gz.",
         {},
         NoRule()},
        {"too-large",
         RuleSeverity::Error,
         "a file with more text than any graph file has",
         "Reading stops at 64 MiB of text, decompressed: a small gzip file can stand for more text than there is "
         "memory. A file with 20000 settings holds some 25 MB. Look whether the right file was given.",
         {},
         NoRule()},
        {"trailing-bytes",
         RuleSeverity::Warning,
         "something behind the compressed text of a gzip file",
         "A gzip file ends with its compressed text. What follows is no compressed text, and the library does not read "
         "it: if it was meant, it is lost without a word. Compress the file again: gzip -9nc graph.xml > graph.xml.gz.",
         {},
         NoRule()},
        {"malformed",
         RuleSeverity::Error,
         "XML that is not well-formed",
         "The XML parser stops at this place: a tag is not closed, a quote is missing, a '<' or '&' is not escaped. "
         "The library would go on with what stands before it and drop the rest. The note tells which element was still "
         "open; nothing behind this place is checked.",
         {},
         NoRule()},
        {"too-deep",
         RuleSeverity::Error,
         "elements nested too deeply",
         "The library reads at most 1024 elements inside each other and gives up files that go deeper. Graph files "
         "need about ten levels, so a closing tag is missing in most cases.",
         {},
         NoRule()},
        {"empty",
         RuleSeverity::Error,
         "a file without any element below the document's element",
         "From such a file the library makes no tree at all: there are no nodes, graphs or settings to work with. Add "
         "what is missing, or look whether the right file was given.",
         {},
         NoRule()},
        {"root-element",
         RuleSeverity::Error,
         "a document's element that is not the expected one",
         "A descriptor starts with <graph_descriptor>, a settings file with <graph_settings>. With another element the "
         "library does not know how to file names, and finds nothing. Were the two files given in the wrong order? The "
         "descriptor comes first.",
         {},
         NoRule()},
        {"parse",
         RuleSeverity::Error,
         "a file that the library cannot make a tree of",
         "The library gave the file up and logged why; the finding repeats it. Nothing of the file can be used.",
         {},
         NoRule()},
        {"too-many-names",
         RuleSeverity::Error,
         "more different names than the library can tell from numbers",
         "Names of nodes, parts and elements that are no words of the vocabulary get keys of their own, in the order "
         "in "
         "which they are read. There is room for some 8000; the keys of later ones are those of attributes that hold "
         "numbers, and width or stream_id are lost. Use names again: parts of different nodes may share theirs.",
         {},
         NoRule()},
        {"type-before-name",
         RuleSeverity::Error,
         "an element of a descriptor with 'type' before 'name'",
         "An element with a name gets its element name as its type. Where a type is already there, because it is "
         "written first, the library gives up the whole file. Remove the type: <port name=\"input\" id=\"0\" "
         "direction=\"0\"/> is a port. Only node elements, which need it, may write their type anywhere.",
         {},
         NoRule()},
        {"missing-version",
         RuleSeverity::Warning,
         "a file that does not state its version",
         "The version tells which generation a descriptor is for, and whether settings fit the descriptor: those of a "
         "descriptor KVA7 have a version such as KVA7.0. Without it, no mismatch is noticed, and helpers that depend "
         "on the generation refuse the graph. Write it into the document's element: <graph_descriptor "
         "version=\"KVA7\">.",
         {},
         NoRule()},
    };
}

} // namespace NuxoTool
