// SPDX-License-Identifier: Apache-2.0
#include "end_to_end/ToolTest.h"

#include "document/XmlDocument.h"

namespace {

using NuxoTool::wholeInteger;
using NuxoTool::XmlAttribute;
using NuxoTool::XmlDocument;
using NuxoTool::XmlElement;

class XmlDocumentTest : public ToolTest {
protected:
    static std::string text(const NuxoTool::Location& place)
    {
        return std::to_string(place.line) + ':' + std::to_string(place.column);
    }

    // Every element and attribute with its place, one line each.
    static std::string listed(const XmlDocument& document)
    {
        std::string lines;
        for (const XmlElement& element : document.elements()) {
            lines += element.path() + ' ' + text(document.locate(element)) + '\n';
            for (const XmlAttribute& attribute : element.attributes) {
                lines += "  " + attribute.name + '=' + attribute.value + ' ' +
                         text(document.locate(element, attribute)) + '\n';
            }
        }
        return lines;
    }

    std::string listedText(const std::string& content) const
    {
        write("document.xml", content);
        return listed(XmlDocument(path("document.xml")));
    }
};

TEST_F(XmlDocumentTest, KnowsThePlacesOfElementsAndAttributes)
{
    EXPECT_EQ(listedText("<A  B = \"1>2\" c='\"'\n  dD=\"&lt;\">\n <b/>\t<c\tk=\"x\"></c>\n</A>\n"), "a 1:1\n"
                                                                                                     "  b=1>2 1:5\n"
                                                                                                     "  c=\" 1:15\n"
                                                                                                     "  dd=< 2:3\n"
                                                                                                     "a/b 3:2\n"
                                                                                                     "a/c 3:7\n"
                                                                                                     "  k=x 3:10\n");
}

TEST_F(XmlDocumentTest, KnowsThePlacesInCompressedFiles)
{
    writeCompressed("document.gz", "<a>\n <b c='1'/></a>");
    EXPECT_EQ(listed(XmlDocument(path("document.gz"))), "a 1:1\na/b 2:2\n  c=1 2:5\n");
}

TEST_F(XmlDocumentTest, KnowsThePlacesBeyondThePiecesOfAFile)
{
    // Pieces have 65536 bytes; the tag of the second element begins in the first piece and ends in the second.
    const std::string before = "<a>" + std::string(65536 - 3 - 6, '\n');
    EXPECT_EQ(listedText(before + "<b c='1' d='2'/></a>"), "a 1:1\na/b 65528:1\n  c=1 65528:4\n  d=2 65528:10\n");
}

TEST_F(XmlDocumentTest, WhatADoctypeAddsStandsWhereItTakesEffect)
{
    EXPECT_EQ(listedText("<!DOCTYPE a [<!ENTITY e \"<x y='1'/>\"><!ATTLIST b more CDATA \"2\">]>\n"
                         "<a>&e;<b own=\"3\"/></a>"),
              "a 2:1\n"
              "a/x 2:4\n"
              "  y=1 2:4\n"
              "a/b 2:7\n"
              "  own=3 2:10\n"
              "  more=2 2:7\n");
}

TEST_F(XmlDocumentTest, AttributesStandAtTheirElementWhereBytesAreNoCharacters)
{
    std::string wide = "\xff\xfe";
    for (const char c : std::string("<a>\n<b c='1'/></a>")) wide += std::string(1, c) + '\0';
    // The byte order mark is before <a>; the second byte of the line feed counts to the next line.
    EXPECT_EQ(listedText(wide), "a 1:3\na/b 2:2\n  c=1 2:2\n");
}

TEST_F(XmlDocumentTest, KeepsTextBetweenElements)
{
    write("document.xml", "<a>\n <b> x <!-- no --> y </b>\n\t z&lt;<c/>&amp;</a>");
    const XmlDocument document(path("document.xml"));
    std::string lines;
    for (const NuxoTool::StrayText& stray : document.texts()) {
        lines += stray.parent->name + ' ' + text(document.locate(stray)) + ' ' + stray.text + '\n';
    }
    EXPECT_EQ(lines, "b 2:6 x  y\na 3:3 z<\na 3:12 &\n");
}

TEST_F(XmlDocumentTest, KeepsTheBeginningOfLongText)
{
    write("document.xml", "<a>" + std::string(100000, 'x') + "</a>");
    const XmlDocument document(path("document.xml"));
    ASSERT_EQ(document.texts().size(), 1U);
    EXPECT_EQ(document.texts()[0].text, std::string(60, 'x'));
}

TEST_F(XmlDocumentTest, MarksRepeatedAttributes)
{
    write("document.xml", "<a b='1' c='2' B='3'/>");
    const XmlDocument document(path("document.xml"));
    const auto& attributes = document.root()->attributes;
    ASSERT_EQ(attributes.size(), 3U);
    EXPECT_FALSE(attributes[0].isRepeated);
    EXPECT_FALSE(attributes[1].isRepeated);
    EXPECT_TRUE(attributes[2].isRepeated);
}

TEST_F(XmlDocumentTest, KeepsWhatStandsBeforeAnError)
{
    EXPECT_EQ(listedText("<a><b/><c d='1' d='2'/><e/></a>"), "a 1:1\na/b 1:4\n");
    EXPECT_EQ(listedText("<a><b></a>"), "a 1:1\na/b 1:4\n");
    EXPECT_EQ(listedText(""), "");
    EXPECT_EQ(XmlDocument(path("no_such_file.xml")).root(), nullptr);
}

TEST_F(XmlDocumentTest, EndsWhereElementsNestTooDeeply)
{
    std::string deep;
    for (int i = 0; i < 2000; ++i) deep += "<a>";
    write("deep.xml", deep);
    const XmlDocument document(path("deep.xml"));
    EXPECT_EQ(document.elements().size(), 1024U);
}

TEST_F(XmlDocumentTest, AnswersByName)
{
    write("document.xml", "<A B='7' b='8' Text='x'><C/><d e='1'/><c f='2'/></A>");
    const XmlDocument document(path("document.xml"));
    const XmlElement* const root = document.root();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->document, &document);
    EXPECT_EQ(root->parent, nullptr);
    EXPECT_EQ(root->value("b"), "7"); // the first one
    EXPECT_EQ(root->integer("b"), 7);
    EXPECT_EQ(root->integer("text"), std::nullopt);
    EXPECT_EQ(root->integer("none"), std::nullopt);
    EXPECT_EQ(root->value("none"), "");
    EXPECT_EQ(root->attribute("none"), nullptr);
    ASSERT_EQ(root->children.size(), 3U);
    EXPECT_EQ(root->child("c"), root->children[0]);
    EXPECT_EQ(root->child("d")->parent, root);
    EXPECT_EQ(root->child("e"), nullptr);
}

TEST(WholeInteger, TakesDecimalNumbersOf32Bits)
{
    EXPECT_EQ(wholeInteger("0"), 0);
    EXPECT_EQ(wholeInteger("-0012"), -12);
    EXPECT_EQ(wholeInteger("+12"), 12);
    EXPECT_EQ(wholeInteger("2147483647"), 2147483647);
    EXPECT_EQ(wholeInteger("-2147483648"), -2147483647 - 1);
}

TEST(WholeInteger, RefusesEverythingElse)
{
    for (const char* const text : {"", " 1", "1 ", "1x", "x", "0x10", "1.0", "+", "-", "+-1", "--1", "++1",
                                   "2147483648", "-2147483649", "99999999999999999999"}) {
        EXPECT_EQ(wholeInteger(text), std::nullopt) << text;
    }
}

} // namespace
