// News from the top: the index names lists, a list its headlines, a headline its article.

#include <string>

#include "examples/session/CandleChart.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "tvk/agent/AsyncNewsRequestOperation.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/agent/XmlNewsListener.h"
#include "tvk/agent/XmlNewsService.h"
#include "tvk/xml/XmlDocument.h"
#include "tvk/xml/XmlElement.h"

namespace session {

namespace {

using tvk::AsyncNewsRequestOperation;
using tvk::ErrorInfo;
using tvk::RefCountedPtr;
using tvk::XmlElement;
using tvk::XmlNewsService;

/// Waits for one document after the other.
class Reader : public tvk::XmlNewsListener {
public:
    explicit Reader(Stage & stage, XmlNewsService & service) : stage_(stage), service_(service) {
        service_.addNewsListener(this);
    }
    Reader(Reader const &) = delete;
    Reader & operator=(Reader const &) = delete;
    ~Reader() override {
        service_.cancelRequestsByListener(this);
        service_.removeNewsListener(this);
    }

    /// The root of the document; null where it did not come.
    RefCountedPtr<XmlElement> read(int type, CString const & id) {
        hasCome_ = false;
        root_ = nullptr;
        errorCode = 0;
        if (service_.requestDocument(type, id, this, nullptr)) {
            stage_.until([this] { return hasCome_; });
        }
        return root_;
    }

    int errorCode = 0;

    void onDocument(XmlNewsService * /*service*/, AsyncNewsRequestOperation * /*operation*/,
                    RefCountedPtr<tvk::XmlDocument> const & document,
                    void * /*userObject*/) override {
        root_ = document->getRootElement();
        hasCome_ = true;
    }
    void onDocumentTimeout(XmlNewsService * /*service*/, AsyncNewsRequestOperation * /*operation*/,
                           void * /*userObject*/) override {
        hasCome_ = true;
    }
    void onDocumentCanceled(XmlNewsService * /*service*/, AsyncNewsRequestOperation * /*operation*/,
                            void * /*userObject*/) override {
        hasCome_ = true;
    }
    void onDocumentError(XmlNewsService * /*service*/, AsyncNewsRequestOperation * /*operation*/,
                         ErrorInfo const & error, void * /*userObject*/) override {
        errorCode = error.getErrorCode();
        stage_.account.say("news", "no document: " + shown(error.getErrorMessage()));
        hasCome_ = true;
    }
    void onHeadline(XmlNewsService * /*service*/,
                    RefCountedPtr<XmlElement> const & headline) override {
        stage_.account.say("new", shown(headline->getAttribute("title")));
    }

private:
    Stage & stage_;
    XmlNewsService & service_;
    bool hasCome_ = false;
    RefCountedPtr<XmlElement> root_;
};

/// The first sub-element of that name below a root that may be null.
RefCountedPtr<XmlElement> firstBelow(RefCountedPtr<XmlElement> const & root, char const * name) {
    return root ? root->getFirstSubElementWithName(name) : nullptr;
}

void sayHeadlines(Account & account, XmlElement const & list) {
    constexpr int SHOWN = 3;
    int left = SHOWN;
    for (auto const & headline : list.getSubElementsWithName("headline")) {
        if (left-- > 0) {
            std::string const time = shown(headline->getAttribute("time"));
            bool const isWhole = time.size() == 14;
            account.say(isWhole ? shownTime(time.substr(8)) : time,
                        shown(headline->getAttribute("title")));
        }
    }
}

/// Whether there is an article with a title and a text in it, which is printed.
bool sayArticle(Account & account, RefCountedPtr<XmlElement> const & article) {
    auto const title = firstBelow(article, "title");
    auto const body = firstBelow(article, "body");
    if (!title || !body) {
        return false;
    }
    account.say("article", shown(title->text()));
    auto const paragraphs = body->getSubElementsWithName("p");
    for (auto const & paragraph : paragraphs) {
        account.say("", printableAnsi(paragraph->text(), 400));
    }
    return !paragraphs.empty();
}

}  // namespace

void readNews(Stage & stage) {
    stage.account.section("News");
    XmlNewsService & service = *tvk::KestrinContainer::instance()->getXmlNewsService();
    Reader reader(stage, service);
    ErrorInfo error;
    stage.account.expect(service.start(&error), "the news service starts");

    auto const index = reader.read(XmlNewsService::TYPE_MASTER_INDEX, "");
    auto const list = firstBelow(index, "list");
    stage.account.expect(static_cast<bool>(list), "the index names lists");
    CString const listId = list ? list->getAttribute("id") : CString();
    auto const headlines = reader.read(XmlNewsService::TYPE_HEADER_LINE, listId);
    auto const headline = firstBelow(headlines, "headline");
    if (headline) {
        stage.account.say("list", shown(list->getAttribute("title")));
        sayHeadlines(stage.account, *headlines);
    }
    stage.account.expect(static_cast<bool>(headline), "the first list holds headlines");
    CString const articleId = headline ? headline->getAttribute("id") : CString();
    auto const article = reader.read(XmlNewsService::TYPE_DETAIL, articleId);
    stage.account.expect(sayArticle(stage.account, article), "the first headline has its article");
    reader.read(XmlNewsService::TYPE_DETAIL, "no such article");
    stage.account.expect(reader.errorCode != 0, "an article that does not exist is an error");
    service.stop();
}

}  // namespace session
