#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk {

class ErrorInfo;

/// The contract of an XML parser. The library has none of its own; a module brings one.
///
/// Ownership: counted like every RefCounted. The destructor is public, so that a parser that serves
///            one function may also live on its stack, where nothing may count it.
/// Threads:   a parser serves one thread at a time.
/// Failure:   false or null, and what failed is told in `*error`, which is handed on as it comes: a
///            concrete parser says whether it may be null.
class TVK_API FastXmlParser : public RefCounted {
public:
    ~FastXmlParser() override = 0;

    // The order of the virtual operations is interface: append, never insert.

    /// Reads a whole document of `size` bytes, which are the caller's and needed during the call alone.
    virtual bool parseBuffer(void const * data, unsigned int size, ErrorInfo * error) = 0;
    /// The document of the last parseBuffer; null, and an error, if that failed or there was none.
    virtual RefCountedPtr<XmlDocument> getDocument(ErrorInfo * error) = 0;

    /// Both in turn: the document of these bytes, or null.
    RefCountedPtr<XmlDocument> parse(void const * data, unsigned int size, ErrorInfo * error);
};

}  // namespace tvk
