#pragma once

#include "tests/modules/services/support/Ear.h"
#include "tests/modules/services/support/FakeKestrin.h"
#include "tvk/agent/AsyncNewsRequestOperation.h"
#include "tvk/agent/XmlNewsListener.h"
#include "tvk/agent/XmlNewsService.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk::test {

/// A listener of news.
class NewsEar : public XmlNewsListener,
                public RequestEar<XmlNewsService, AsyncNewsRequestOperation> {
public:
    using RequestEar::RequestEar;

    RefCountedPtr<XmlDocument> document;  ///< the last one
    RefCountedPtr<XmlElement> element;    ///< the last headline

    void onDocument(XmlNewsService * from, AsyncNewsRequestOperation * about,
                    RefCountedPtr<XmlDocument> const & news, void * user) override {
        document = news;
        hearOutcome(from, about, "document " + bytesOf(news->getRootElement()->elementName()),
                    user);
    }
    void onDocumentTimeout(XmlNewsService * from, AsyncNewsRequestOperation * about,
                           void * user) override {
        hearOutcome(from, about, "timeout", user);
    }
    void onDocumentCanceled(XmlNewsService * from, AsyncNewsRequestOperation * about,
                            void * user) override {
        hearOutcome(from, about, "canceled", user);
    }
    void onDocumentError(XmlNewsService * from, AsyncNewsRequestOperation * about,
                         ErrorInfo const & error, void * user) override {
        component = error.getComponentCode();
        hearOutcome(from, about, "error " + shown(&error), user);
    }
    void onHeadline(XmlNewsService * from, RefCountedPtr<XmlElement> const & headline) override {
        element = headline;
        hear(from, "headline " + bytesOf(headline->getAttribute("id")));
    }
};

}  // namespace tvk::test
