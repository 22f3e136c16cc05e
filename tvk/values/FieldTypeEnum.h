#pragma once

/// The five kinds of value. The numbers go into cache slots and dumps and stay as they are.
enum FieldTypeEnum : int {
    FLDTYPE_STRING = 0,
    FLDTYPE_NUMBER = 1,
    FLDTYPE_LIST = 2,
    FLDTYPE_RECORD = 3,
    FLDTYPE_RAW = 4
};
