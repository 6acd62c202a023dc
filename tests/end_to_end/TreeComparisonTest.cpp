// SPDX-License-Identifier: Apache-2.0
#include "format/TreeComparison.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using NuxoTool::meansTheSame;

std::string settings(const std::string& content)
{
    return "<graph_settings version=\"1\">" + content + "</graph_settings>";
}

bool sameContent(const std::string& a, const std::string& b)
{
    return meansTheSame(settings(a), settings(b));
}

TEST(TreeComparison, OrderOfAttributesLayoutAndCaseOfNamesMeanNothing)
{
    EXPECT_TRUE(sameContent("<a width='1' name=\"x\"><B/></a>", "\n<A Name='x'\nWIDTH='1'>text<b></b><!-- b --></A>"));
}

TEST(TreeComparison, ValuesMean)
{
    EXPECT_FALSE(sameContent("<a width='1'/>", "<a width='2'/>"));
    EXPECT_FALSE(sameContent("<a name='x'/>", "<a name='X'/>"));
    EXPECT_FALSE(sameContent("<a name='x'/>", "<a name='x '/>"));
    EXPECT_FALSE(sameContent("<a name='x\\n'/>", "<a name='x&#10;'/>"));
    EXPECT_FALSE(meansTheSame(settings("<a/>"), "<graph_settings version=\"2\"><a/></graph_settings>"));
}

TEST(TreeComparison, PresenceMeans)
{
    EXPECT_FALSE(sameContent("<a width='1'/>", "<a/>"));
    EXPECT_FALSE(sameContent("<a/>", "<a/><a/>"));
    EXPECT_FALSE(sameContent("<a><b/></a>", "<a/><b/>"));
    EXPECT_FALSE(sameContent("<a><b><c width='1'/></b></a>", "<a><b><c width='2'/></b></a>"));
}

TEST(TreeComparison, OrderOfElementsOfANameMeans)
{
    EXPECT_FALSE(sameContent("<a width='1'/><a width='2'/>", "<a width='2'/><a width='1'/>"));
}

TEST(TreeComparison, OrderOfUnknownAttributesMeans)
{
    EXPECT_TRUE(sameContent("<a one='1' two='2'/>", "<a one='1' two='3'/>")); // the library keeps the first alone
    EXPECT_FALSE(sameContent("<a one='1' two='2'/>", "<a two='2' one='1'/>"));
}

TEST(TreeComparison, WhatCannotBeReadIsNotTheSame)
{
    EXPECT_FALSE(sameContent("<a>", "<a>"));
    EXPECT_FALSE(meansTheSame("", ""));
    EXPECT_FALSE(sameContent("", ""));
    // A descriptor's element cannot be filed when its type stands before its name.
    const std::string refused = "<graph_descriptor version='1'><sink type='x' name='s'/></graph_descriptor>";
    EXPECT_FALSE(meansTheSame(refused, refused));
}

} // namespace
