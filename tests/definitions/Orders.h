#pragma once

#include <type_traits>

#include "tests/support/VirtualOrder.h"
#include "tvk/values/RefCounted.h"

/// The places of the virtual operations of each interface, for it and for all that derive from it. A
/// class begins with the two entries of its destructor and destroyObject.
namespace tvk::test {

template <class Class>
void expectDataTypeDefOrder() {
    expectVirtualOrder(3, {{"getName", slotOf(&Class::getName)},
                           {"getNameJa", slotOf(&Class::getNameJa)},
                           {"getDescription", slotOf(&Class::getDescription)},
                           {"isSimpleType", slotOf(&Class::isSimpleType)},
                           {"isRecordType", slotOf(&Class::isRecordType)},
                           {"isListType", slotOf(&Class::isListType)}});
}

template <class Class>
void expectSimpleTypeDefOrder() {
    expectDataTypeDefOrder<Class>();
    expectVirtualOrder(9, {{"isDerivedType", slotOf(&Class::isDerivedType)}});
}

template <class Class>
void expectRecordTypeDefOrder() {
    expectDataTypeDefOrder<Class>();
    expectVirtualOrder(9, {{"getFieldDefList", slotOf(&Class::getFieldDefList)},
                           {"getFieldDef", slotOf(&Class::getFieldDef)},
                           {"getFieldCount", slotOf(&Class::getFieldCount)},
                           {"getKind", slotOf(&Class::getKind)}});
}

template <class Class>
void expectMessageTypeDefOrder() {
    expectRecordTypeDefOrder<Class>();
    expectVirtualOrder(13, {{"getMessageTypeId", slotOf(&Class::getMessageTypeId)}});
}

template <class Class>
void expectListTypeDefOrder() {
    expectDataTypeDefOrder<Class>();
    expectVirtualOrder(9, {{"getElementTypeDef", slotOf(&Class::getElementTypeDef)},
                           {"getElementTypeName", slotOf(&Class::getElementTypeName)},
                           {"getLengthOfCount", slotOf(&Class::getLengthOfCount)},
                           {"getElementFieldName", slotOf(&Class::getElementFieldName)}});
}

template <class Class>
void expectFieldDefOrder() {
    expectVirtualOrder(3, {{"getEnclosingRecordType", slotOf(&Class::getEnclosingRecordType)},
                           {"getName", slotOf(&Class::getName)},
                           {"getNameJa", slotOf(&Class::getNameJa)},
                           {"getQualifiedName", slotOf(&Class::getQualifiedName)},
                           {"getDescription", slotOf(&Class::getDescription)},
                           {"getType", slotOf(&Class::getType)},
                           {"getTypeName", slotOf(&Class::getTypeName)},
                           {"getMaxSize", slotOf(&Class::getMaxSize)}});
}

template <class Class>
void expectListElementFieldDefOrder() {
    expectFieldDefOrder<Class>();
    expectVirtualOrder(11, {{"getIndex", slotOf(&Class::getIndex)}});
}

template <class Class>
void expectDataTypeDefManagerOrder() {
    expectVirtualOrder(3, {{"getDataTypeDefByName", slotOf(&Class::getDataTypeDefByName)},
                           {"getDataTypeDefList", slotOf(&Class::getDataTypeDefList)}});
}

template <class Class>
void expectMessageDefManagerOrder() {
    expectDataTypeDefManagerOrder<Class>();
    expectVirtualOrder(5, {{"getMessageDefList", slotOf(&Class::getMessageDefList)},
                           {"getMessageDefByName", slotOf(&Class::getMessageDefByName)},
                           {"validate", slotOf(&Class::validate)}});
}

/// Definitions are held by count: nobody makes one on the stack, copies it or deletes it.
template <class Class, class Base>
constexpr bool IS_COUNTED_CLASS =
    std::is_base_of_v<Base, Class> && std::is_base_of_v<RefCounted, Class> &&
        std::has_virtual_destructor_v<Class> &&
    !std::is_destructible_v<Class> && !std::is_copy_constructible_v<Class> &&
    !std::is_copy_assignable_v<Class>;

}  // namespace tvk::test
