#pragma once

#include "tvk/errors/KestrinErrorManager.h"

namespace tvk {

/// The error manager of an application.
///
/// Log: with a log level above 0, lines that begin with "[errorManager]" on the process's standard
///      streams: errors and what was held back on standard error, changes of flags on standard
///      output.
class TVK_API KestrinErrorManagerImpl : public KestrinErrorManager {
public:
    KestrinErrorManagerImpl();
    KestrinErrorManagerImpl(KestrinErrorManagerImpl const &) = delete;
    KestrinErrorManagerImpl & operator=(KestrinErrorManagerImpl const &) = delete;

    bool isNetworkFailure(ErrorInfo const & error) const override;
    CString getInternalErrorCode(ErrorInfo const & error) const override;
    bool hasErrorOfType(KestrinErrorTypeEnum type, int component) const override;
    void clearErrorOfType(KestrinErrorTypeEnum type, int component) override;
    void clearErrorForAllComponents(KestrinErrorTypeEnum type) override;
    /// Deliberate: nothing happens at log level 0. So an application that does not log gets every
    /// network failure shown once, and only one that does holds back those of a flagged component.
    void setErrorOfType(KestrinErrorTypeEnum type, int component) override;
    /// Deliberate: ErrorDomain_SSL gives 1, not ErrorDomainCode_SSL; internal codes that are stored
    /// outside rely on it.
    int getErrorDomainCode(CString domain) const override;
    int showError(KestrinErrorShower * shower, ErrorInfo const & error, CWnd * parent) override;
    void notifyErrorAlertDismissed(ErrorInfo const & error) override;

    /// The log level, 0 at first. All levels above 0 are the same.
    int getVerbose() const;
    void setVerbose(int level);

private:
    struct State;

    ~KestrinErrorManagerImpl() override;

    void checkNetworkFailure(ErrorInfo const & error, bool * isNetwork, bool * isGlobal) const;
    void dumpErrorInfo(ErrorInfo const & error) const;

    State * state_;
};

}  // namespace tvk
