#include "tvk/errors/KestrinErrorManager.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/VirtualOrder.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinErrorManagerImpl.h"
#include "tvk/errors/KestrinErrorShower.h"

namespace tvk {
namespace {

using test::expectVirtualOrder;
using test::slotOf;

static_assert(std::is_base_of_v<RefCounted, KestrinErrorManager>);
static_assert(std::is_abstract_v<KestrinErrorManager>);
static_assert(std::is_destructible_v<KestrinErrorManager>);
static_assert(!std::is_destructible_v<KestrinErrorManagerImpl>);
static_assert(std::is_base_of_v<KestrinErrorManager, KestrinErrorManagerImpl>);
static_assert(std::is_destructible_v<KestrinErrorShower>);
static_assert(std::has_virtual_destructor_v<KestrinErrorShower>);
static_assert(std::is_abstract_v<KestrinErrorShower>);
static_assert(std::is_copy_assignable_v<KestrinErrorShower>);
static_assert(std::is_same_v<std::underlying_type_t<KestrinErrorTypeEnum>, int>);

TEST(KestrinErrorManager, KeepsItsVirtualOrder) {
    expectVirtualOrder(
        3,
        {{"isNetworkFailure", slotOf(&KestrinErrorManager::isNetworkFailure)},
         {"getInternalErrorCode", slotOf(&KestrinErrorManager::getInternalErrorCode)},
         {"hasErrorOfType", slotOf(&KestrinErrorManager::hasErrorOfType)},
         {"clearErrorOfType", slotOf(&KestrinErrorManager::clearErrorOfType)},
         {"clearErrorForAllComponents", slotOf(&KestrinErrorManager::clearErrorForAllComponents)},
         {"setErrorOfType", slotOf(&KestrinErrorManager::setErrorOfType)},
         {"getErrorDomainCode", slotOf(&KestrinErrorManager::getErrorDomainCode)},
         {"showError", slotOf(&KestrinErrorManager::showError)},
         {"notifyErrorAlertDismissed", slotOf(&KestrinErrorManager::notifyErrorAlertDismissed)}});
}

TEST(KestrinErrorManager, AddsNoVirtualOperationInItsImplementation) {
    EXPECT_EQ(slotOf(&KestrinErrorManagerImpl::getVerbose), std::nullopt);
    EXPECT_EQ(slotOf(&KestrinErrorManagerImpl::setVerbose), std::nullopt);
}

TEST(KestrinErrorShower, HasOneOperationBehindItsDestructor) {
    expectVirtualOrder(2, {{"showErrorAlert", slotOf(&KestrinErrorShower::showErrorAlert)}});
}

TEST(KestrinErrorManager, NumbersItsTypes) {
    EXPECT_EQ(ERRORTYPE_NETWORK_FAILURE, 0);
    EXPECT_EQ(ERRORTYPE_SYSTEM_ERROR, 1);
    EXPECT_EQ(ERRORTYPE_LAST, 7);
}

}  // namespace
}  // namespace tvk
