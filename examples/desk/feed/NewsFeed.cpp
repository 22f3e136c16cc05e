#include "examples/desk/feed/NewsFeed.h"

#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/feed/Container.h"
#include "examples/desk/feed/Report.h"
#include "tvk/agent/AsyncNewsRequestOperation.h"
#include "tvk/xml/XmlDocument.h"

namespace desk {

using tvk::XmlNewsService;

NewsFeed::~NewsFeed() { stop(); }

void NewsFeed::start() {
    if (std::exchange(isStarted_, true)) {
        return;
    }
    newsService().addNewsListener(this);
    tvk::ErrorInfo error;
    if (!newsService().start(&error)) {
        return report(models_.alerts, error);
    }
    request(XmlNewsService::TYPE_MASTER_INDEX, "");
}

void NewsFeed::stop() {
    if (!std::exchange(isStarted_, false)) {
        return;
    }
    newsService().cancelRequestsByListener(this);
    newsService().removeNewsListener(this);
    newsService().stop();
}

void NewsFeed::showList(std::string const & listId) {
    request(XmlNewsService::TYPE_HEADER_LINE, listId);
}

void NewsFeed::read(std::string const & headlineId) {
    hasArticle_ = true;
    models_.news.markRead(headlineId);
    request(XmlNewsService::TYPE_DETAIL, headlineId);
}

void NewsFeed::request(int documentType, std::string const & documentId) {
    newsService().requestDocument(documentType, ansi(documentId), this, nullptr);
}

void NewsFeed::onDocument(tvk::XmlNewsService * /*service*/,
                          tvk::AsyncNewsRequestOperation * operation,
                          tvk::RefCountedPtr<tvk::XmlDocument> const & document,
                          void * /*userObject*/) {
    tvk::XmlElement const & root = *document->getRootElement();
    switch (operation->getDocumentType()) {
        case XmlNewsService::TYPE_MASTER_INDEX:
            models_.news.setIndex(root);
            if (!models_.news.lists().empty()) {
                showList(models_.news.lists().front().id);
            }
            break;
        case XmlNewsService::TYPE_HEADER_LINE:
            models_.news.setHeadlines(root);
            if (!hasArticle_ && models_.news.rowCount() > 0) {
                read(models_.news.headline(0).id);
            }
            break;
        default:
            models_.news.setArticle(root);
    }
}

void NewsFeed::onDocumentTimeout(tvk::XmlNewsService * /*service*/,
                                 tvk::AsyncNewsRequestOperation * /*operation*/,
                                 void * /*userObject*/) {
    report(models_.alerts, timeoutError());
}

void NewsFeed::onDocumentCanceled(tvk::XmlNewsService * /*service*/,
                                  tvk::AsyncNewsRequestOperation * /*operation*/,
                                  void * /*userObject*/) {}

void NewsFeed::onDocumentError(tvk::XmlNewsService * /*service*/,
                               tvk::AsyncNewsRequestOperation * /*operation*/,
                               tvk::ErrorInfo const & error, void * /*userObject*/) {
    report(models_.alerts, error);
}

void NewsFeed::onHeadline(tvk::XmlNewsService * /*service*/,
                          tvk::RefCountedPtr<tvk::XmlElement> const & headline) {
    models_.news.addHeadline(*headline);
}

}  // namespace desk
