#pragma once

#include <gtest/gtest.h>

#include <string>

#include "modules/expat/ExpatXmlParser.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk::test {

/// The root of a picture in SVG; null, and a test failure, where it is no XML.
inline RefCountedPtr<XmlElement> svgRootOf(std::string const & svg) {
    ErrorInfo error;
    RefCountedPtr<ExpatXmlParser> const parser(new ExpatXmlParser);
    auto const document = parser->parse(svg.data(), static_cast<unsigned int>(svg.size()), &error);
    if (document.isNull()) {
        ADD_FAILURE() << error.getErrorMessage().GetString();
        return nullptr;
    }
    return document->getRootElement();
}

}  // namespace tvk::test
