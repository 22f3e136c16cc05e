#pragma once

#include <functional>
#include <string>
#include <utility>

#include "tests/modules/services/support/FakeKestrin.h"
#include "tvk/agent/AsyncNewsRequestOperation.h"
#include "tvk/agent/XmlNewsListener.h"
#include "tvk/agent/XmlNewsService.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk::test {

/// A listener of news that writes what it hears into a log, with its name in front, and then does
/// what the test wants.
class NewsEar : public XmlNewsListener {
public:
    NewsEar(Log & log, std::string name) : log_(log), name_(std::move(name)) {}

    std::function<void()> during;  ///< runs inside each callback

    // Of the last callback.
    XmlNewsService * service = nullptr;
    RefCountedPtr<AsyncNewsRequestOperation> operation;
    RefCountedPtr<XmlDocument> document;
    RefCountedPtr<XmlElement> element;
    void * userObject = nullptr;
    bool wasPending = false;
    int component = -1;  ///< of the last error

    void onDocument(XmlNewsService * from, AsyncNewsRequestOperation * about,
                    RefCountedPtr<XmlDocument> const & news, void * user) override {
        document = news;
        hear(from, about, "document " + bytesOf(news->getRootElement()->elementName()), user);
    }
    void onDocumentTimeout(XmlNewsService * from, AsyncNewsRequestOperation * about,
                           void * user) override {
        hear(from, about, "timeout", user);
    }
    void onDocumentCanceled(XmlNewsService * from, AsyncNewsRequestOperation * about,
                            void * user) override {
        hear(from, about, "canceled", user);
    }
    void onDocumentError(XmlNewsService * from, AsyncNewsRequestOperation * about,
                         ErrorInfo const & error, void * user) override {
        component = error.getComponentCode();
        hear(from, about, "error " + shown(&error), user);
    }
    void onHeadline(XmlNewsService * from, RefCountedPtr<XmlElement> const & headline) override {
        element = headline;
        hear(from, "headline " + bytesOf(headline->getAttribute("id")));
    }

private:
    void hear(XmlNewsService * from, AsyncNewsRequestOperation * about, std::string const & what,
              void * user) {
        operation = about;
        userObject = user;
        wasPending = about->isPending();
        hear(from, what);
    }
    void hear(XmlNewsService * from, std::string const & what) {
        service = from;
        log_.push_back(name_ + ' ' + what);
        if (during) {
            auto const now = during;  // may be changed from inside
            now();
        }
    }

    Log & log_;
    std::string const name_;
};

}  // namespace tvk::test
