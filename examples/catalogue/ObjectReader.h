#pragma once

#include <set>
#include <string>
#include <vector>

#include "examples/catalogue/Complaints.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RecordData.h"
#include "tvk/values/RefCountedPtr.h"

/// The members of one object of a file of definitions. What is missing or of another kind is
/// reported at its place and reads as empty, so that reading goes on and the rest is looked at too.
///
/// A member that is null counts as missing, as in every message that the parser makes.
class ObjectReader {
public:
    struct Element {
        tvk::RefCountedPtr<tvk::FieldValue> value;
        std::string place;
    };

    /// Reports a value that is no object; its members are then not reported as missing. The object
    /// and the complaints must outlive the reader.
    ObjectReader(tvk::FieldValue const & value, std::string place, Complaints & complaints);

    CString requiredText(char const * name);  ///< The empty text is reported as well.
    CString optionalText(char const * name);
    /// From 1 to 0x7fffffff; 0 where the member is missing or no such number.
    int optionalCount(char const * name);
    std::vector<Element> requiredArray(char const * name);
    /// Reports the members that none of the above has asked for: a name that is misspelt must not
    /// pass for one that is left out.
    void refuseOthers();

    std::string placeOf(std::string const & name) const;

private:
    tvk::RefCountedPtr<tvk::FieldValue> find(char const * name);
    tvk::RefCountedPtr<tvk::FieldValue> findRequired(char const * name);
    CString asText(tvk::FieldValue const * value, char const * name);

    tvk::RecordData const * object_ = nullptr;
    std::string place_;
    Complaints & complaints_;
    std::set<CString> known_;
};
