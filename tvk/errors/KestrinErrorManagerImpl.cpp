#include "tvk/errors/KestrinErrorManagerImpl.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/errors/KestrinErrorShower.h"
#include "tvk/values/FieldValue.h"

namespace tvk {

namespace {

constexpr std::size_t TYPE_COUNT = ERRORTYPE_LAST + 1;

bool isKnown(KestrinErrorTypeEnum type) { return static_cast<std::size_t>(type) < TYPE_COUNT; }

std::uint32_t bitOf(int component) { return 1U << (static_cast<unsigned int>(component) % 32U); }

constexpr std::uint32_t GLOBAL_BIT = 1U << ErrorInfo::ComponentCode_Global;

/// The text of a hint, or null where the record has none.
CString const * hintOf(ErrorInfo const & error, CString const & key) {
    if (!error.hasUserInfo(key)) {
        return nullptr;
    }
    // The record holds the value on, so the text outlives the reference taken here.
    return &static_cast<FieldValue const *>(error.getUserInfo(key).get())->asString();
}

bool saysYes(CString const & text) {
    return text == "1" || text == "true" || text == "YES" || text == "yes";
}

}  // namespace

struct KestrinErrorManagerImpl::State {
    std::array<std::uint32_t, TYPE_COUNT> flags{};  // a bit a component
    std::uint32_t & flagsOf(KestrinErrorTypeEnum type) {
        return flags[static_cast<std::size_t>(type)];
    }
    int verbose = 0;
    std::set<CString> shownErrors;  // their internal codes
};

KestrinErrorManagerImpl::KestrinErrorManagerImpl() : state_(new State) {}

KestrinErrorManagerImpl::~KestrinErrorManagerImpl() { delete state_; }

int KestrinErrorManagerImpl::getVerbose() const { return state_->verbose; }

void KestrinErrorManagerImpl::setVerbose(int level) { state_->verbose = level; }

int KestrinErrorManagerImpl::showError(KestrinErrorShower * shower, ErrorInfo const & error,
                                       CWnd * parent) {
    bool const logs = state_->verbose > 0;
    if (logs) {
        dumpErrorInfo(error);
    }
    bool isNetwork;
    bool isGlobal;
    checkNetworkFailure(error, &isNetwork, &isGlobal);
    CString const code = getInternalErrorCode(error);
    if (isNetwork) {
        int const component = error.getComponentCode();
        if (hasErrorOfType(ERRORTYPE_NETWORK_FAILURE, component)) {
            if (logs) {
                std::fprintf(stderr, "[errorManager]ignored network failure %s@%s",
                             code.GetString(), error.getDomain().GetString());
            }
            return 0;
        }
        setErrorOfType(ERRORTYPE_NETWORK_FAILURE, component);
        if (isGlobal) {
            setErrorOfType(ERRORTYPE_NETWORK_FAILURE, ErrorInfo::ComponentCode_Global);
        }
    }
    // The flags stay set where the error is being shown already.
    if (!state_->shownErrors.insert(code).second) {
        if (logs) {
            std::fprintf(stderr, "[errorManager]ignored error %s@%s: already being shown\n",
                         code.GetString(), error.getDomain().GetString());
        }
        return 0;
    }
    if (shower == nullptr) {
        return 0;
    }
    return shower->showErrorAlert(
        this, error,
        isNetwork ? KestrinErrorShower::KIND_NETWORK_FAILURE : KestrinErrorShower::KIND_OTHER,
        parent);
}

void KestrinErrorManagerImpl::notifyErrorAlertDismissed(ErrorInfo const & error) {
    state_->shownErrors.erase(getInternalErrorCode(error));
}

bool KestrinErrorManagerImpl::isNetworkFailure(ErrorInfo const & error) const {
    bool isNetwork;
    bool isGlobal;
    checkNetworkFailure(error, &isNetwork, &isGlobal);
    return isNetwork;
}

void KestrinErrorManagerImpl::checkNetworkFailure(ErrorInfo const & error, bool * isNetwork,
                                                  bool * isGlobal) const {
    CString const * const type = hintOf(error, ErrorInfo::OrvKey_ErrorTypeHint);
    *isNetwork = type != nullptr && *type == ErrorInfo::ErrorType_NetworkFailure;
    CString const * const global = hintOf(error, ErrorInfo::OrvKey_GlobalErrorHint);
    *isGlobal = global != nullptr && saysYes(*global);
}

CString KestrinErrorManagerImpl::getInternalErrorCode(ErrorInfo const & error) const {
    CString code;
    code.Format("%d:%d:%d", error.getComponentCode(), getErrorDomainCode(error.getDomain()),
                error.getErrorCode());
    return code;
}

int KestrinErrorManagerImpl::getErrorDomainCode(CString domain) const {
    if (domain == KestrinConstants::ErrorDomain_Kestrin) {
        return KestrinConstants::ErrorDomainCode_Kestrin;
    }
    if (domain == ErrorInfo::ErrorDomain_System) {
        return ErrorInfo::ErrorDomainCode_System;
    }
    if (domain == ErrorInfo::ErrorDomain_POSIX) {
        return ErrorInfo::ErrorDomainCode_POSIX;
    }
    if (domain == ErrorInfo::ErrorDomain_UrlLoading) {
        return ErrorInfo::ErrorDomainCode_UrlLoading;
    }
    if (domain == ErrorInfo::ErrorDomain_CURL) {
        return ErrorInfo::ErrorDomainCode_CURL;
    }
    return ErrorInfo::ErrorDomainCode_System;
}

bool KestrinErrorManagerImpl::hasErrorOfType(KestrinErrorTypeEnum type, int component) const {
    return isKnown(type) && (state_->flagsOf(type) & (GLOBAL_BIT | bitOf(component))) != 0;
}

void KestrinErrorManagerImpl::setErrorOfType(KestrinErrorTypeEnum type, int component) {
    if (state_->verbose <= 0) {
        return;
    }
    std::uint32_t & flags = state_->flagsOf(type);
    if ((flags & bitOf(component)) == 0) {
        std::fprintf(stdout, "[errorManager]set %d error flag for component %d",
                     static_cast<int>(type), component);
    }
    flags |= bitOf(component);
}

void KestrinErrorManagerImpl::clearErrorOfType(KestrinErrorTypeEnum type, int component) {
    if (!isKnown(type)) {
        return;
    }
    std::uint32_t & flags = state_->flagsOf(type);
    if (state_->verbose > 0) {
        if ((flags & GLOBAL_BIT) != 0) {
            std::fprintf(stdout, "[errorManager]cleared error flag %d for the global component\n",
                         static_cast<int>(type));
        }
        if ((flags & bitOf(component)) != 0) {
            std::fprintf(stdout, "[errorManager]cleared error flag %d for component %d\n",
                         static_cast<int>(type), component);
        }
    }
    flags &= ~(GLOBAL_BIT | bitOf(component));
}

void KestrinErrorManagerImpl::clearErrorForAllComponents(KestrinErrorTypeEnum type) {
    if (!isKnown(type)) {
        return;
    }
    std::uint32_t & flags = state_->flagsOf(type);
    if (flags != 0 && state_->verbose > 0) {
        std::fprintf(stdout, "[errorManager]cleared error flag %d for all components\n",
                     static_cast<int>(type));
    }
    flags = 0;
}

// Deliberate: no line feed behind this text, nor behind those of an ignored network failure and of a
// flag that is set; readers of the log look for the prefix, not for lines.
void KestrinErrorManagerImpl::dumpErrorInfo(ErrorInfo const & error) const {
    std::fprintf(stderr, "[errorManager]error %s(%s:%d): %s",
                 getInternalErrorCode(error).GetString(), error.getDomain().GetString(),
                 error.getErrorCode(), error.getErrorMessage().GetString());
}

}  // namespace tvk
