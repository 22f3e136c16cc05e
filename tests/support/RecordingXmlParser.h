#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/xml/FastXmlParser.h"

namespace tvk::test {

/// A parser that reads nothing: it notes its calls and answers as it was told.
class RecordingXmlParser : public FastXmlParser {
public:
    explicit RecordingXmlParser(bool succeeds = true, RefCountedPtr<XmlDocument> document = nullptr)
        : succeeds_(succeeds), document_(std::move(document)) {}

    bool parseBuffer(void const * data, unsigned int size, ErrorInfo * error) override {
        calls.push_back("parseBuffer");
        seenError = error;
        if (onParse) {
            onParse(data, size);
        }
        content =
            data == nullptr ? std::string() : std::string(static_cast<char const *>(data), size);
        byteBehind = data == nullptr ? -1 : static_cast<unsigned char const *>(data)[size];
        return succeeds_;
    }

    RefCountedPtr<XmlDocument> getDocument(ErrorInfo * error) override {
        calls.push_back("getDocument");
        seenError = error;
        return document_;
    }

    std::function<void(void const * data, unsigned int size)> onParse;  ///< called while it parses
    std::vector<std::string> calls;
    std::string content;              ///< of the last call
    int byteBehind = -1;              ///< the one that follows the content
    ErrorInfo * seenError = nullptr;  ///< handed to the last call

private:
    bool succeeds_;
    RefCountedPtr<XmlDocument> document_;
};

}  // namespace tvk::test
