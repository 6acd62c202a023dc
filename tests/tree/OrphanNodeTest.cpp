// SPDX-License-Identifier: Apache-2.0
// A node that its parent does not hold: no public operation leaves one behind, but its questions have answers.
#include "TreeTestSupport.h"

#include <nuxo/tree/TreeAccess.h>

#include <gtest/gtest.h>

namespace {

TEST(OrphanNode, HasNoNameAndNoKey)
{
    const NodePtr parent = makeNode();
    addChild(*parent, NUXO_KEY_SENSOR);
    NodePtr orphan(addChild(*parent, NUXO_KEY_PORT));
    NUXO::ItemMap& items = NUXO::TreeAccess::items(*parent);
    items.erase(items.find(NUXO_KEY_PORT));
    ASSERT_EQ(parent.get(), orphan->getAncestor());
    EXPECT_EQ("NA", orphan->getName());
    EXPECT_EQ(0U, orphan->getUid());
    orphan.reset();
    EXPECT_EQ("36{} ", contentOf(*parent)); // the others are left alone
}

} // namespace
