#include "tvk/xml/FastXmlUtil.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"
#include "tvk/xml/FastXmlParser.h"

namespace tvk {

namespace {

RefCountedPtr<XmlElement> firstWithNames(XmlElement const & element,
                                         std::vector<CString> const & names) {
    return FastXmlUtil::getFirstSubElementWithPath(element, static_cast<unsigned int>(names.size()),
                                                   names.data());
}

void reportFile(int failure, CString const & path, ErrorInfo & error) {
    CString message;
    message.Format("%d: %s(%s)", failure, std::strerror(failure), path.GetString());
    error.setDomain(ErrorInfo::ErrorDomain_POSIX);
    error.setErrorCode(failure);
    error.setErrorMessage(message);
}

/// Sets `size`, or gives the errno of what was in the way.
int findSize(std::FILE * file, unsigned int & size) {
    std::fseek(file, 0, SEEK_END);
    long const end = std::ftell(file);
    if (end < 0) {
        return errno;
    }
    if (static_cast<unsigned long>(end) > std::numeric_limits<unsigned int>::max()) {
        return EFBIG;
    }
    size = static_cast<unsigned int>(end);
    return 0;
}

}  // namespace

CString FastXmlUtil::getUnqualifiedName(CString const & name) {
    int const colon = name.Find(':');
    return colon < 0 ? name : name.Mid(colon + 1);
}

RefCountedPtr<XmlElement> FastXmlUtil::getFirstSubElementWithPath(XmlElement const & element,
                                                                  CString const & path) {
    return firstWithNames(element,
                          StringUtil::split(path, KestrinConstants::XML_ELEMENT_PATH_DELIMITER));
}

RefCountedPtr<XmlElement> FastXmlUtil::getFirstSubElementWithPath(XmlElement const & element,
                                                                  unsigned int count,
                                                                  CString const * const names) {
    if (count == 0) {
        return nullptr;
    }
    if (count == 1) {
        return element.getFirstSubElementWithName(names[0]);
    }
    // Where the search stands among the sub-elements of each element on its way; those in front
    // lead nowhere.
    struct Level {
        XmlElement::SubElementList::const_iterator next;
        XmlElement::SubElementList::const_iterator end;
    };
    std::vector<Level> levels;
    auto const descend = [&levels](XmlElement const & parent) {
        levels.push_back({parent.subElementList().begin(), parent.subElementList().end()});
    };
    descend(element);
    while (!levels.empty()) {
        Level & level = levels.back();
        CString const & name = names[levels.size() - 1];
        level.next = std::find_if(level.next, level.end, [&name](auto const & child) {
            return !child.isNull() && child->elementName() == name;
        });
        if (level.next == level.end) {
            levels.pop_back();
            continue;
        }
        RefCountedPtr<XmlElement> const & found = *level.next;
        if (levels.size() == count) {
            return found;
        }
        ++level.next;
        descend(*found);
    }
    return nullptr;
}

RefCountedPtr<XmlElement> FastXmlUtil::getFirstSubElementWithPath(XmlElement const & element,
                                                                  char const * first, ...) {
    va_list rest;
    va_start(rest, first);
    RefCountedPtr<XmlElement> found = getFirstSubElementWithPathV(element, first, rest);
    va_end(rest);
    return found;
}

RefCountedPtr<XmlElement> FastXmlUtil::getFirstSubElementWithPathV(XmlElement const & element,
                                                                   char const * first,
                                                                   va_list rest) {
    std::vector<CString> names;
    for (char const * name = first; name != nullptr; name = va_arg(rest, char const *)) {
        names.emplace_back(name);
    }
    return firstWithNames(element, names);
}

RefCountedPtr<XmlDocument> FastXmlUtil::parseXmlFile(CString const & path, FastXmlParser * parser,
                                                     ErrorInfo * error) {
    std::FILE * const file = std::fopen(path, "rb");
    if (file == nullptr) {
        reportFile(errno, path, *error);
        return nullptr;
    }
    unsigned int size = 0;
    if (int const failure = findSize(file, size); failure != 0) {
        reportFile(failure, path, *error);
        std::fclose(file);
        return nullptr;
    }
    std::rewind(file);
    // All zero at first: what a short read leaves must not be what the heap held before.
    auto const content = std::make_unique<char[]>(std::size_t{size} + 1);
    static_cast<void>(std::fread(content.get(), 1, size, file));
    return parser->parse(content.get(), size, error);
}

}  // namespace tvk
