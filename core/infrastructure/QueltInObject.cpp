#include "infrastructure/QueltInObject.h"

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInString.h"

namespace {

const QueltInObjectTypeOwner s_typeOwner(QueltInObject::sType());

}

QueltInObject::~QueltInObject() = default;

QueltInObjectTypeClass* QueltInObject::dType() const {
    return sType();
}

QueltInString QueltInObject::toString() const {
    const QueltInObjectTypeClass* const type = dType();
    return {type != nullptr ? type->getName() : ""};
}

QueltInObjectTypeClass* QueltInObject::sType() {
    static QueltInObjectTypeClass* const type = QueltInObjectTypeClass::make(s_className, nullptr);
    return type;
}

int QueltInObject::isObjectOfThisType(const QueltInObject& /*object*/) {
    return 1;
}

QueltInObject* QueltInObject::cast(QueltInObject& object) {
    return &object;
}

const QueltInObject* QueltInObject::cast(const QueltInObject& object) {
    return &object;
}

void* QueltInObject::operator new(std::size_t bytes) {
    return QueltInMemory::allocate(bytes);
}

void* QueltInObject::operator new(std::size_t bytes, const std::nothrow_t& /*nothrow*/) noexcept {
    try {
        return QueltInMemory::allocate(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* QueltInObject::operator new(std::size_t /*bytes*/, void* place) noexcept {
    return place;
}

void QueltInObject::operator delete(void* memory) noexcept {
    QueltInMemory::release(memory);
}

void QueltInObject::operator delete(void* memory, const std::nothrow_t& /*nothrow*/) noexcept {
    QueltInMemory::release(memory);
}

void QueltInObject::operator delete(void* /*memory*/, void* /*place*/) noexcept {}
