#pragma once

#include <expat.h>

namespace tvk::expat {

/// Gives Expat the encodings that it lacks and the code pages of the library have: Shift_JIS, read as
/// Windows-31J as its writers mean it, and Windows-1252. XML_STATUS_ERROR for any other name.
///
/// An XML_UnknownEncodingHandler.
int XMLCALL findEncoding(void * unused, XML_Char const * name, XML_Encoding * encoding);

}  // namespace tvk::expat
