#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "examples/desk/Text.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/xml/XmlElement.h"

namespace tvk::test {

/// A message as an agent makes it of JSON in UTF-8.
inline RefCountedPtr<KestrinMessage> messageOf(std::string const & json) {
    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
    JsonMessageParser parser(&cache);
    ErrorInfo error;
    auto const message =
        parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, &error);
    EXPECT_FALSE(message.isNull()) << error.getErrorMessage().GetString();
    return message;
}

/// An element with attributes in UTF-8.
inline RefCountedPtr<XmlElement> elementOf(
    char const * name, std::initializer_list<std::pair<char const *, char const *>> attributes) {
    RefCountedPtr<XmlElement> element(new XmlElement(name));
    for (auto const & [attribute, value] : attributes) {
        element->setAttribute(attribute, desk::ansi(value));
    }
    return element;
}

}  // namespace tvk::test
