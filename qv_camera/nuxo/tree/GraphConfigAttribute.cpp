// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/ElementBuilder.h>
#include <nuxo/tree/GraphConfigAttribute.h>

#include <new>

namespace NUXO {

GraphConfigIntAttribute::~GraphConfigIntAttribute() = default;

int32_t GraphConfigIntAttribute::getValue(int& out)
{
    out = value;
    return StatusOk;
}

int32_t GraphConfigIntAttribute::setValue(int newValue)
{
    return insertInteger(newValue);
}

int32_t GraphConfigIntAttribute::insertInteger(int newValue)
{
    value = newValue;
    return StatusOk;
}

GraphConfigIntAttribute* GraphConfigIntAttribute::copy() const
{
    try {
        return new GraphConfigIntAttribute(value);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* GraphConfigIntAttribute::operator new(size_t size)
{
    return ::operator new(size);
}

void GraphConfigIntAttribute::operator delete(void* memory)
{
    releaseAttributeMemory(memory);
}

GraphConfigStrAttribute::~GraphConfigStrAttribute() = default;

int32_t GraphConfigStrAttribute::getValue(std::string& out)
{
    try {
        out = value;
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    return StatusOk;
}

int32_t GraphConfigStrAttribute::setValue(const std::string& newValue)
{
    return insertString(newValue);
}

int32_t GraphConfigStrAttribute::insertString(const std::string& newValue)
{
    try {
        value = newValue;
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    return StatusOk;
}

GraphConfigStrAttribute* GraphConfigStrAttribute::copy() const
{
    try {
        return new GraphConfigStrAttribute(value);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* GraphConfigStrAttribute::operator new(size_t size)
{
    return ::operator new(size);
}

void GraphConfigStrAttribute::operator delete(void* memory)
{
    releaseAttributeMemory(memory);
}

} // namespace NUXO
