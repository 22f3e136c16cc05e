#pragma once

#include "tests/support/CallRecorder.h"
#include "tvk/agent/AsyncNewsRequestOperation.h"
#include "tvk/agent/XmlNewsListener.h"
#include "tvk/agent/XmlNewsService.h"
#include "tvk/xml/XmlDocument.h"

/// The least that can stand behind the news contracts: each operation writes its call into a log,
/// which must outlive the object, and answers with what stands ready.
namespace tvk::test {

class RecordingNewsOperation : public AsyncNewsRequestOperation, private CallRecorder {
public:
    explicit RecordingNewsOperation(Log & log) : CallRecorder(log) {}

    bool canceled = false;
    bool pending = true;
    int documentType = 0;
    XmlNewsListener * listener = nullptr;
    void * userObject = nullptr;

    void cancel() override { record("cancel"); }
    bool isCanceled() const override { return answer("isCanceled", canceled); }
    bool isPending() const override { return answer("isPending", pending); }
    int getDocumentType() const override { return answer("getDocumentType", documentType); }
    XmlNewsListener * getListener() const override { return answer("getListener", listener); }
    void * getUserObject() const override { return answer("getUserObject", userObject); }

protected:
    ~RecordingNewsOperation() override = default;

private:
    template <class Answer>
    Answer answer(char const * name, Answer value) const {
        record(name);
        return value;
    }
};

class RecordingNewsListener : public XmlNewsListener, private CallRecorder {
public:
    explicit RecordingNewsListener(Log & log) : CallRecorder(log) {}

    void onDocument(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                    RefCountedPtr<XmlDocument> const & document, void * userObject) override {
        record("onDocument", service, operation, document, userObject);
    }
    void onDocumentTimeout(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                           void * userObject) override {
        record("onDocumentTimeout", service, operation, userObject);
    }
    void onDocumentCanceled(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                            void * userObject) override {
        record("onDocumentCanceled", service, operation, userObject);
    }
    void onDocumentError(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                         ErrorInfo const & error, void * userObject) override {
        record("onDocumentError", service, operation, &error, userObject);
    }
    void onHeadline(XmlNewsService * service, RefCountedPtr<XmlElement> const & headline) override {
        record("onHeadline", service, headline);
    }
};

class RecordingNewsService : public XmlNewsService, private CallRecorder {
public:
    explicit RecordingNewsService(Log & log) : CallRecorder(log) {}

    // The answers.
    bool yes = true;
    RefCountedPtr<AsyncNewsRequestOperation> operation;

    bool start(ErrorInfo * error) override {
        record("start", error);
        return yes;
    }
    void stop() override { record("stop"); }
    bool isRunning() const override {
        record("isRunning");
        return yes;
    }
    void addNewsListener(XmlNewsListener * listener) override {
        record("addNewsListener", listener);
    }
    bool hasNewsListener(XmlNewsListener const * listener) const override {
        record("hasNewsListener", listener);
        return yes;
    }
    void removeNewsListener(XmlNewsListener const * listener) override {
        record("removeNewsListener", listener);
    }
    void removeAllNewsListeners() override { record("removeAllNewsListeners"); }
    RefCountedPtr<AsyncNewsRequestOperation> requestDocument(int documentType,
                                                             CString const & documentId,
                                                             XmlNewsListener * listener,
                                                             void * userObject) override {
        record("requestDocument", documentType, documentId, listener, userObject);
        return operation;
    }
    void cancelAllRequests() override { record("cancelAllRequests"); }
    void cancelRequestsByListener(XmlNewsListener const * listener) override {
        record("cancelRequestsByListener", listener);
    }

protected:
    ~RecordingNewsService() override = default;
};

}  // namespace tvk::test
