#pragma once

#include <cstdarg>

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/XmlDocument.h"
#include "tvk/xml/XmlElement.h"

#if defined(__GNUC__)
#define TVK_ENDS_WITH_NULL __attribute__((__sentinel__))
#else
#define TVK_ENDS_WITH_NULL
#endif

namespace tvk {

class ErrorInfo;
class FastXmlParser;

/// Helpers around XML trees: names without their prefix, elements found by a path of names, and files
/// read through a parser.
///
/// Threads: no state; any thread may call any of these, each with a tree and a parser of its own.
class TVK_API FastXmlUtil {
public:
    /// What stands behind the first ":", or the whole name if there is none.
    static CString getUnqualifiedName(CString const & name);

    // The element that a path of names leads to from `element`, which the first name looks below.
    // Names are compared with elementName() alone. The result is the first way in document order
    // that goes on to the end, not the first step at each level: of two children "a" of which only
    // the second has a "b", the path "a", "b" finds that "b". Null where no way leads to the end, and
    // for a path without names.
    //
    // Deep trees and long paths need no more stack than others.

    /// The names between the "/" of a text. A "/" in front has no effect; an empty step ("a//b", "a/",
    /// "") is the name of elements whose name is empty.
    ///
    /// A literal is no CString and goes to the overload for lists of names: say CString("a/b").
    static RefCountedPtr<XmlElement> getFirstSubElementWithPath(XmlElement const & element,
                                                                CString const & path);
    static RefCountedPtr<XmlElement> getFirstSubElementWithPath(XmlElement const & element,
                                                                unsigned int count,
                                                                CString const * names);
    /// One name an argument, `char const *`, and a null pointer behind the last:
    /// getFirstSubElementWithPath(element, "a", "b", nullptr).
    ///
    /// Deliberate: a text of type `char const *` on its own comes here too and not to the form for
    /// paths; without the null pointer the call reads arguments that are not there. Applications
    /// are written to these overloads. GCC and Clang warn where the null pointer is missing.
    static RefCountedPtr<XmlElement> getFirstSubElementWithPath(XmlElement const & element,
                                                                char const * first,
                                                                ...) TVK_ENDS_WITH_NULL;
    /// The same with the arguments behind `first`. They are not looked at when `first` is null.
    static RefCountedPtr<XmlElement> getFirstSubElementWithPathV(XmlElement const & element,
                                                                 char const * first, va_list rest);

    /// The document of a file, read whole and given to the parser.
    ///
    /// Requires: `parser` and `error` are not null.
    /// Failure:  null. A file that cannot be opened, or whose size cannot be told or does not fit
    ///           an unsigned int (EFBIG; a folder is one), gives ErrorDomain_POSIX, errno as the
    ///           code and the message "errno: its text(path)"; a parser tells its own failures.
    ///           Beyond that nothing of `*error` changes.
    ///
    /// Deliberate: the stream stays open from the moment that the size is known, whether the parser
    /// succeeds or not, so each file read costs a descriptor; and bytes that could not be read are
    /// zero, without an error. Applications count on both.
    static RefCountedPtr<XmlDocument> parseXmlFile(CString const & path, FastXmlParser * parser,
                                                   ErrorInfo * error);
};

}  // namespace tvk
