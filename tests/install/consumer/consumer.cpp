// A program of somebody else: every public header, and one call into the library.

#include <tvk/tvk.h>

#include <cstdio>
#include <cstring>

int main(int argc, char ** argv) {
    char const * const version = argc > 1 ? argv[1] : "";
    CString text;
    text.Format("tvk %s", version);
    std::puts(text);
    return text.GetLength() == static_cast<int>(std::strlen(version)) + 4 ? 0 : 1;
}
