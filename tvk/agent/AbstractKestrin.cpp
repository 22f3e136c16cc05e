// Properties, configuration, listeners and the errors of an agent.

#include "tvk/agent/AbstractKestrin.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include "tvk/agent/KestrinListener.h"
#include "tvk/values/SimplePropertySet.h"

namespace tvk {

AbstractKestrin::AbstractKestrin() {
    try {
        properties_ = new SimplePropertySet;
    } catch (std::bad_alloc const &) {
        // The agent stands without; the first use of a property tries again.
    }
}

// The rest ends in the order of the members, the last one first: an error manager that ends here and
// looks back finds no subscriptions, but listeners, properties and the configuration.
AbstractKestrin::~AbstractKestrin() { subscriptions_.clear(); }

PropertySet & AbstractKestrin::properties() const {
    if (properties_.isNull()) {
        properties_ = new SimplePropertySet;
    }
    return *properties_;
}

void AbstractKestrin::setProperty(CString const & name, CString const & value) {
    properties().setProperty(name, value);
}

CString AbstractKestrin::getProperty(CString const & name) const {
    return properties().getProperty(name);
}

bool AbstractKestrin::hasProperty(CString const & name) const {
    return properties().hasProperty(name);
}

void AbstractKestrin::addProperties(PropertySet const & other) {
    properties().addProperties(other);
}

void AbstractKestrin::mergeProperties(PropertySet const & other) {
    properties().mergeProperties(other);
}

void AbstractKestrin::removeProperty(CString const & name) { properties().removeProperty(name); }

void AbstractKestrin::removeAllProperties() { properties().removeAllProperties(); }

std::vector<CString> AbstractKestrin::getPropertyNames() const {
    return properties().getPropertyNames();
}

unsigned int AbstractKestrin::getPropertyCount() const { return properties().getPropertyCount(); }

KestrinStatusEnum AbstractKestrin::getStatus() const { return status; }

void AbstractKestrin::initialize(RefCountedPtr<KestrinConfig> const & config,
                                 ErrorInfo * /*error*/) {
    config_ = config;
    mergeProperties(*config_);
}

RefCountedPtr<KestrinConfig> AbstractKestrin::getConfig() const { return config_; }

void AbstractKestrin::logout() { doLogout(); }

void AbstractKestrin::addKestrinListener(KestrinListener * listener) {
    listeners_.push_back(listener);
}

std::vector<KestrinListener *> AbstractKestrin::getKestrinListeners() const { return listeners_; }

bool AbstractKestrin::hasKestrinListener(KestrinListener const * listener) const {
    // A pass of fire asks for one listener after the other.
    std::size_t const guess = nextAskedFor_.load(std::memory_order_relaxed);
    auto const place = guess < listeners_.size() && listeners_[guess] == listener
                           ? listeners_.begin() + static_cast<std::ptrdiff_t>(guess)
                           : std::find(listeners_.begin(), listeners_.end(), listener);
    if (place == listeners_.end()) {
        return false;
    }
    nextAskedFor_.store(static_cast<std::size_t>(place - listeners_.begin()) + 1,
                        std::memory_order_relaxed);
    return true;
}

void AbstractKestrin::removeKestrinListener(KestrinListener const * listener) {
    auto const entry = std::find(listeners_.begin(), listeners_.end(), listener);
    if (entry != listeners_.end()) {
        listeners_.erase(entry);
    }
}

void AbstractKestrin::removeAllKestrinListeners() { listeners_.clear(); }

KestrinErrorManager * AbstractKestrin::getErrorManager() const { return errorManager_.get(); }

void AbstractKestrin::setErrorManager(KestrinErrorManager * manager) { errorManager_ = manager; }

template <class... Parameters, class... Arguments>
void AbstractKestrin::fire(void (KestrinListener::*operation)(Kestrin *, Parameters...),
                           Arguments const &... arguments) {
    std::vector<KestrinListener *> const snapshot = getKestrinListeners();
    for (KestrinListener * const listener : snapshot) {
        if (hasKestrinListener(listener)) {
            (listener->*operation)(this, arguments...);
        }
    }
}

void AbstractKestrin::fireOnLoginReply(RefCountedPtr<KestrinMessage> const & reply, bool succeeded,
                                       CString const & code, CString const & text) {
    fire(&KestrinListener::onLoginReply, reply, succeeded, code, text);
}

void AbstractKestrin::fireOnReloginRequired(ErrorInfo const & reason) {
    fire(&KestrinListener::onReloginRequired, reason);
}

void AbstractKestrin::fireStartupCompleted(RecordData const & startupData) {
    fire(&KestrinListener::onStartupCompleted, startupData);
}

void AbstractKestrin::fireConnected() { fire(&KestrinListener::onConnected); }

void AbstractKestrin::fireKestrinError(ErrorInfo const & error) {
    fire(&KestrinListener::onKestrinError, error);
}

void AbstractKestrin::fireOnStopped(ErrorInfo const * error) {
    fire(&KestrinListener::onStopped, error);
}

void AbstractKestrin::fireOnRealTimeServiceStarted(bool restarted) {
    fire(&KestrinListener::onRealTimeServiceStarted, restarted);
}

void AbstractKestrin::fireOnRealTimeServiceStopped(ErrorInfo const * error) {
    fire(&KestrinListener::onRealTimeServiceStopped, error);
}

}  // namespace tvk
