// SPDX-License-Identifier: Apache-2.0
#include "ExpatCalls.h"

#include <cstring>
#include <ostream>

#include <dlfcn.h>
#include <expat.h>

namespace {

ExpatCalls* observer = nullptr;

template <typename Function> Function nextDefinition(const char* name)
{
    void* const address = dlsym(RTLD_NEXT, name);
    Function function = nullptr;
    static_assert(sizeof(function) == sizeof(address), "functions and objects share one address space");
    std::memcpy(&function, &address, sizeof(function));
    return function;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const ExpatCall& call)
{
    return stream << call.length << (call.isFinal ? " bytes, final" : " bytes");
}

ExpatCalls::ExpatCalls()
{
    observer = this;
}

ExpatCalls::~ExpatCalls()
{
    observer = nullptr;
}

bool ExpatCalls::anyFinal() const
{
    for (const ExpatCall& call : mCalls) {
        if (call.isFinal) return true;
    }
    return false;
}

int ExpatCalls::total() const
{
    int sum = 0;
    for (const ExpatCall& call : mCalls) sum += call.length;
    return sum;
}

// The library looks these names up in the program first, so they must be visible to the dynamic linker.
extern "C" __attribute__((visibility("default"))) XML_Parser XML_ParserCreate(const XML_Char* encoding)
{
    if (observer != nullptr && observer->creationFails()) return nullptr;
    static const auto create = nextDefinition<XML_Parser (*)(const XML_Char*)>("XML_ParserCreate");
    return create(encoding);
}

extern "C" __attribute__((visibility("default"))) enum XML_Status XML_Parse(XML_Parser parser, const char* s, int len,
                                                                            int isFinal)
{
    if (observer != nullptr) observer->record({len, isFinal != 0});
    static const auto parse = nextDefinition<enum XML_Status (*)(XML_Parser, const char*, int, int)>("XML_Parse");
    return parse(parser, s, len, isFinal);
}
