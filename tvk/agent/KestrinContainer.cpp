#include "tvk/agent/KestrinContainer.h"

#include "tvk/agent/ChartService.h"
#include "tvk/agent/Kestrin.h"
#include "tvk/agent/XmlNewsService.h"
#include "tvk/errors/KestrinErrorManager.h"

namespace tvk {

KestrinContainer::KestrinContainer() = default;

KestrinContainer::~KestrinContainer() {
    // Each is null once it is gone, for those that end behind it and look for it.
    kestrin_ = nullptr;
    errorManager_ = nullptr;
    xmlNewsService_ = nullptr;
    chartService_ = nullptr;
}

KestrinContainer * KestrinContainer::instance() { return _instance; }

void KestrinContainer::cleanup() {
    delete _instance;
    _instance = nullptr;
}

void KestrinContainer::setKestrin(Kestrin * kestrin) { kestrin_ = kestrin; }

void KestrinContainer::setErrorManager(KestrinErrorManager * errorManager) {
    errorManager_ = errorManager;
}

void KestrinContainer::setThreadPool(ThreadPool * threadPool) { threadPool_ = threadPool; }

void KestrinContainer::setXmlNewsService(XmlNewsService * xmlNewsService) {
    xmlNewsService_ = xmlNewsService;
}

void KestrinContainer::setChartService(ChartService * chartService) {
    chartService_ = chartService;
}

}  // namespace tvk
