#include "tvk/definitions/SimpleTypeDef.h"

#include "tvk/definitions/SimpleTypeDefImpl.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

namespace {

// Shift-JIS, byte by byte: what encoding this file has or the compiler writes does not matter.
constexpr char CHARACTER_STRING[] = "\x95\xB6\x8E\x9A\x97\xF1";
constexpr char INTEGER[] = "\x90\xAE\x90\x94";
constexpr char DECIMAL_NUMBER[] = "10\x90\x69\x90\xA7\x90\x94";
constexpr char OF[] = "\x82\xCC";
constexpr char SIMPLE_TYPE_DEFINITION[] =
    "\x8A\xC8\x92\x50\x83\x5E\x83\x43\x83\x76\x92\xE8\x8B\x60";

CString definitionOf(char const * nameJa) { return CString(nameJa) + OF + SIMPLE_TYPE_DEFINITION; }

}  // namespace

SimpleTypeDef::~SimpleTypeDef() = default;

SimpleTypeDef const * SimpleTypeDef::STRING_TYPE() {
    static RefCountedPtr<SimpleTypeDef> const TYPE =
        new SimpleTypeDefImpl("string", CHARACTER_STRING, definitionOf(CHARACTER_STRING));
    return TYPE.get();
}

SimpleTypeDef const * SimpleTypeDef::INTEGER_TYPE() {
    static RefCountedPtr<SimpleTypeDef> const TYPE =
        new SimpleTypeDefImpl("integer", INTEGER, definitionOf(INTEGER));
    return TYPE.get();
}

SimpleTypeDef const * SimpleTypeDef::DECIMAL_TYPE() {
    static RefCountedPtr<SimpleTypeDef> const TYPE =
        new SimpleTypeDefImpl("decimal", DECIMAL_NUMBER, definitionOf(DECIMAL_NUMBER));
    return TYPE.get();
}

SimpleTypeDef const * SimpleTypeDef::BOOLEAN_TYPE() {
    static RefCountedPtr<SimpleTypeDef> const TYPE =
        new SimpleTypeDefImpl("boolean", "Boolean", CString("Boolean") + SIMPLE_TYPE_DEFINITION);
    return TYPE.get();
}

}  // namespace tvk
