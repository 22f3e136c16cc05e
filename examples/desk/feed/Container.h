#pragma once

#include "tvk/agent/ChartService.h"
#include "tvk/agent/Kestrin.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/agent/XmlNewsService.h"
#include "tvk/errors/KestrinErrorManager.h"

namespace desk {

// What the container holds. Requires: the application has filled it.
inline tvk::Kestrin & agent() { return *tvk::KestrinContainer::instance()->getKestrin(); }
inline tvk::KestrinErrorManager & errorManager() {
    return *tvk::KestrinContainer::instance()->getErrorManager();
}
inline tvk::ChartService & chartService() {
    return *tvk::KestrinContainer::instance()->getChartService();
}
inline tvk::XmlNewsService & newsService() {
    return *tvk::KestrinContainer::instance()->getXmlNewsService();
}

}  // namespace desk
