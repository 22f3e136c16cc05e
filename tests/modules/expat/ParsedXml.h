#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "modules/expat/ExpatXmlParser.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/TextBytes.h"
#include "tests/support/XmlTree.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::test {

/// The bytes of a file in tests/data/xml.
inline std::string dataOf(std::string const & name) {
    std::ifstream stream(TVK_XML_DATA "/" + name, std::ios::binary);
    EXPECT_TRUE(stream) << name;
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The root of a document, which must be one.
inline RefCountedPtr<XmlElement> rootOf(std::string_view xml) {
    ExactBuffer const block(xml);
    ExpatXmlParser parser;
    ErrorInfo error;
    RefCountedPtr<XmlDocument> const document = parser.parse(block.data(), block.length(), &error);
    EXPECT_FALSE(error.hasError()) << bytesOf(error.getErrorMessage());
    return document.isNull() ? RefCountedPtr<XmlElement>(new XmlElement)
                             : document->getRootElement();
}

/// The tree as lines; the message where there is none.
inline std::string outlineOfXml(std::string_view xml) {
    ExactBuffer const block(xml);
    ExpatXmlParser parser;
    ErrorInfo error;
    RefCountedPtr<XmlDocument> const document = parser.parse(block.data(), block.length(), &error);
    EXPECT_EQ(document.isNull(), error.hasError());
    return document.isNull() ? bytesOf(error.getErrorMessage())
                             : outlineOf(*document->getRootElement());
}

/// The message without its place, of a document that must be refused.
inline std::string reasonOf(std::string_view xml) {
    ExactBuffer const block(xml);
    ExpatXmlParser parser;
    ErrorInfo error;
    EXPECT_FALSE(parser.parseBuffer(block.data(), block.length(), &error));
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_XmlParsingError);
    std::string const message = bytesOf(error.getErrorMessage());
    return message.substr(message.find(": ") + 2);
}

}  // namespace tvk::test
