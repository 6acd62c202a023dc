// SPDX-License-Identifier: Apache-2.0
#include "document/ElementName.h"

#include "document/Expat.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace NuxoTool {

namespace {

constexpr size_t kLongestName = 4096; // beyond it nobody asks for signs of other alphabets

// Only the parser knows which signs of all alphabets element names may have.
bool isParsed(const std::string& name)
{
    const ExpatPointer parser = makeExpat();
    const std::string element = '<' + name + "/>";
    const bool isRight =
        XML_Parse(parser.get(), element.data(), static_cast<int>(element.size()), XML_TRUE) == XML_STATUS_OK;
    if (!isRight && XML_GetErrorCode(parser.get()) == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    return isRight;
}

} // namespace

bool isAscii(char character)
{
    return static_cast<unsigned char>(character) < 0x80U;
}

bool isElementNameStart(char character)
{
    return (character >= 'a' && character <= 'z') || character == '_' || !isAscii(character);
}

bool isElementNameCharacter(char character)
{
    return isElementNameStart(character) || (character >= '0' && character <= '9') || character == '.' ||
           character == '-';
}

bool isElementName(const std::string& name)
{
    if (name.empty() || !isElementNameStart(name[0])) return false;
    if (!std::all_of(name.begin(), name.end(), isElementNameCharacter)) return false;
    if (std::all_of(name.begin(), name.end(), isAscii)) return true;
    return name.size() <= kLongestName && isParsed(name);
}

} // namespace NuxoTool
