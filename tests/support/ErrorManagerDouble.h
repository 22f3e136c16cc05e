#pragma once

#include <functional>
#include <utility>

#include "tvk/errors/KestrinErrorManager.h"

namespace tvk::test {

/// An error manager that knows no error and shows none. What counts is who holds it, and its end.
class ErrorManagerDouble : public KestrinErrorManager {
public:
    explicit ErrorManagerDouble(std::function<void()> atEnd = [] {}) : atEnd_(std::move(atEnd)) {}
    ~ErrorManagerDouble() override { atEnd_(); }

    bool isNetworkFailure(ErrorInfo const &) const override { return false; }
    CString getInternalErrorCode(ErrorInfo const &) const override { return CString(); }
    bool hasErrorOfType(KestrinErrorTypeEnum, int) const override { return false; }
    void clearErrorOfType(KestrinErrorTypeEnum, int) override {}
    void clearErrorForAllComponents(KestrinErrorTypeEnum) override {}
    void setErrorOfType(KestrinErrorTypeEnum, int) override {}
    int getErrorDomainCode(CString) const override { return 1; }
    int showError(KestrinErrorShower *, ErrorInfo const &, CWnd *) override { return 0; }
    void notifyErrorAlertDismissed(ErrorInfo const &) override {}

private:
    std::function<void()> atEnd_;
};

}  // namespace tvk::test
