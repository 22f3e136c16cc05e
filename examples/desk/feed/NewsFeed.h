#pragma once

#include <string>

#include "examples/desk/model/Models.h"
#include "tvk/agent/XmlNewsListener.h"

namespace desk {

/// Brings news to its model, from the news service in the container.
class NewsFeed : public tvk::XmlNewsListener {
public:
    explicit NewsFeed(Models & models) : models_(models) {}
    ~NewsFeed() override;
    NewsFeed(NewsFeed const &) = delete;
    NewsFeed & operator=(NewsFeed const &) = delete;

    /// Asks for the lists, then for the headlines of the first one.
    void start();
    void stop();
    void showList(std::string const & listId);
    void read(std::string const & headlineId);

private:
    void request(int documentType, std::string const & documentId);

    void onDocument(tvk::XmlNewsService * service, tvk::AsyncNewsRequestOperation * operation,
                    tvk::RefCountedPtr<tvk::XmlDocument> const & document,
                    void * userObject) override;
    void onDocumentTimeout(tvk::XmlNewsService * service,
                           tvk::AsyncNewsRequestOperation * operation, void * userObject) override;
    void onDocumentCanceled(tvk::XmlNewsService * service,
                            tvk::AsyncNewsRequestOperation * operation, void * userObject) override;
    void onDocumentError(tvk::XmlNewsService * service, tvk::AsyncNewsRequestOperation * operation,
                         tvk::ErrorInfo const & error, void * userObject) override;
    void onHeadline(tvk::XmlNewsService * service,
                    tvk::RefCountedPtr<tvk::XmlElement> const & headline) override;

    Models & models_;
    bool isStarted_ = false;
    bool hasArticle_ = false;  // asked for, so that the reader is not empty at the start
};

}  // namespace desk
