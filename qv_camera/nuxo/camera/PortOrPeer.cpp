// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>

namespace NUXO {

template <typename Read> bool PortOrPeer::readEither(Read read)
{
    if (read(mPort)) return true;
    if (mPeer == nullptr) mPeer = peerOf(&mPort); // a port without one says so each time
    if (mPeer == nullptr || !read(*mPeer)) return false;
    NUXO_INFORM("Using the peer's attribute value");
    return true;
}

bool PortOrPeer::fetch(uint32_t key, int& value)
{
    return readEither([key, &value](const IGraphConfig& node) { return NUXO::fetch(node, key, value); });
}

bool PortOrPeer::fetch(uint32_t key, std::string& text)
{
    return readEither([key, &text](const IGraphConfig& node) { return NUXO::fetch(node, key, text); });
}

} // namespace NUXO
