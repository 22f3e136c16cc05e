#include "tvk/errors/KestrinErrorManagerImpl.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/PrintCString.h"
#include "tests/support/Recorded.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/errors/KestrinErrorShower.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using Manager = RefCountedPtr<KestrinErrorManagerImpl>;

constexpr KestrinErrorTypeEnum NETWORK = ERRORTYPE_NETWORK_FAILURE;
constexpr auto TYPE_8 = static_cast<KestrinErrorTypeEnum>(8);
constexpr auto TYPE_BELOW_0 = static_cast<KestrinErrorTypeEnum>(-1);

struct Shown {
    KestrinErrorManager * manager;
    ErrorInfo const * error;
    int kind;
    CWnd * parent;

    friend bool operator==(Shown const &, Shown const &) = default;
};

class RecordingShower : public KestrinErrorShower {
public:
    int showErrorAlert(KestrinErrorManager * manager, ErrorInfo const & error, int kind,
                       CWnd * parent) override {
        shown.push_back({manager, &error, kind, parent});
        return result;
    }

    int result = 77;
    std::vector<Shown> shown;
};

ErrorInfo errorOf(int component, int code, CString const & domain = "System",
                  CString const & message = "broken") {
    return ErrorInfo(component, domain, code, message, nullptr);
}

ErrorInfo withHint(ErrorInfo error, CString const & key, char const * text) {
    error.setUserInfo(key, new StringData(text));
    return error;
}

ErrorInfo networkFailure(int component, int code) {
    return withHint(errorOf(component, code), ErrorInfo::OrvKey_ErrorTypeHint, "0");
}

ErrorInfo globalNetworkFailure(int component, int code, char const * text = "yes") {
    return withHint(networkFailure(component, code), ErrorInfo::OrvKey_GlobalErrorHint, text);
}

/// What `work` writes to the standard streams.
struct Written {
    std::string out;
    std::string err;

    friend bool operator==(Written const &, Written const &) = default;
    friend std::ostream & operator<<(std::ostream & stream, Written const & written) {
        return stream << "out=<" << written.out << "> err=<" << written.err << ">";
    }
};

template <class Work>
Written writtenBy(Work work) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    work();
    std::fflush(stdout);
    std::fflush(stderr);
    std::string out = testing::internal::GetCapturedStdout();
    return {std::move(out), testing::internal::GetCapturedStderr()};
}

Manager managerAt(int verbose) {
    Manager manager = new KestrinErrorManagerImpl;
    manager->setVerbose(verbose);
    return manager;
}

TEST(KestrinErrorManagerImpl, BeginsWithoutFlagsAndSilent) {
    Manager const manager = new KestrinErrorManagerImpl;
    EXPECT_EQ(manager->getVerbose(), 0);
    for (int type = 0; type <= ERRORTYPE_LAST; ++type) {
        for (int component = 0; component < 32; ++component) {
            EXPECT_FALSE(
                manager->hasErrorOfType(static_cast<KestrinErrorTypeEnum>(type), component));
        }
    }
    manager->setVerbose(5);
    EXPECT_EQ(manager->getVerbose(), 5);
    manager->setVerbose(-3);
    EXPECT_EQ(manager->getVerbose(), -3);
}

TEST(KestrinErrorManagerImpl, TellsANetworkFailureByItsHintAlone) {
    Manager const manager = new KestrinErrorManagerImpl;
    EXPECT_FALSE(manager->isNetworkFailure(ErrorInfo()));
    EXPECT_TRUE(manager->isNetworkFailure(networkFailure(0, 0)));
    EXPECT_FALSE(manager->isNetworkFailure(
        errorOf(0, KestrinConstants::ERR_NetworkIOError, KestrinConstants::ErrorDomain_Kestrin)));
    struct Row {
        char const * hint;
        bool isNetwork;
    };
    for (Row const & row : {Row{"0", true}, Row{"1", false}, Row{"", false}, Row{"00", false},
                            Row{" 0", false}, Row{"network", false}}) {
        ErrorInfo const error = withHint(errorOf(1, 1), ErrorInfo::OrvKey_ErrorTypeHint, row.hint);
        EXPECT_EQ(manager->isNetworkFailure(error), row.isNetwork) << row.hint;
    }
    // A global hint alone is none, and the hint of a cause does not count.
    EXPECT_FALSE(manager->isNetworkFailure(
        withHint(errorOf(1, 1), ErrorInfo::OrvKey_GlobalErrorHint, "yes")));
    ErrorInfo const cause = networkFailure(1, 1);
    EXPECT_FALSE(manager->isNetworkFailure(ErrorInfo(&cause)));
}

TEST(KestrinErrorManagerImpl, ReadsANumberAsAHint) {
    Manager const manager = new KestrinErrorManagerImpl;
    ErrorInfo error;
    error.setUserInfo(ErrorInfo::OrvKey_ErrorTypeHint, FieldValue::FALSE_VALUE);
    EXPECT_TRUE(manager->isNetworkFailure(error));
    error.setUserInfo(ErrorInfo::OrvKey_ErrorTypeHint, FieldValue::TRUE_VALUE);
    EXPECT_FALSE(manager->isNetworkFailure(error));
}

TEST(KestrinErrorManagerImpl, NumbersTheDomains) {
    Manager const manager = new KestrinErrorManagerImpl;
    struct Row {
        CString domain;
        int code;
    };
    for (Row const & row :
         {Row{KestrinConstants::ErrorDomain_Kestrin, 101}, Row{ErrorInfo::ErrorDomain_System, 1},
          Row{ErrorInfo::ErrorDomain_POSIX, 2}, Row{ErrorInfo::ErrorDomain_UrlLoading, 3},
          Row{ErrorInfo::ErrorDomain_CURL, 4}, Row{"", 1}, Row{"SYSTEM", 1}, Row{"http ", 1},
          Row{CString("curl\0", 5), 1}, Row{"other", 1}}) {
        EXPECT_EQ(manager->getErrorDomainCode(row.domain), row.code) << row.domain;
    }
}

TEST(KestrinErrorManagerImpl, DeliberateSslCountsAsAnUnknownDomain) {
    Manager const manager = new KestrinErrorManagerImpl;
    EXPECT_EQ(manager->getErrorDomainCode(ErrorInfo::ErrorDomain_SSL), 1);
    EXPECT_EQ(manager->getInternalErrorCode(errorOf(0, 5, "ssl")), "0:1:5");
}

TEST(KestrinErrorManagerImpl, MakesTheInternalCodeOfThreeNumbers) {
    Manager const manager = new KestrinErrorManagerImpl;
    EXPECT_EQ(manager->getInternalErrorCode(ErrorInfo()), "0:1:0");
    EXPECT_EQ(manager->getInternalErrorCode(
                  errorOf(7, 1000, KestrinConstants::ErrorDomain_Kestrin, "one")),
              "7:101:1000");
    EXPECT_EQ(manager->getInternalErrorCode(errorOf(-2147483647 - 1, -2147483647 - 1, "curl")),
              "-2147483648:4:-2147483648");
}

TEST(KestrinErrorManagerImpl, ShowsAnOtherErrorWithKind1) {
    Manager const manager = new KestrinErrorManagerImpl;
    RecordingShower shower;
    ErrorInfo const error = errorOf(3, 4);
    int window;
    auto * const parent = reinterpret_cast<CWnd *>(&window);
    EXPECT_EQ(manager->showError(&shower, error, parent), 77);
    EXPECT_EQ(shower.shown, (std::vector<Shown>{{manager.get(), &error, 1, parent}}));
}

TEST(KestrinErrorManagerImpl, ShowsANetworkFailureWithKind0) {
    Manager const manager = new KestrinErrorManagerImpl;
    RecordingShower shower;
    shower.result = -5;
    ErrorInfo const error = networkFailure(3, 4);
    EXPECT_EQ(manager->showError(&shower, error, nullptr), -5);
    EXPECT_EQ(shower.shown, (std::vector<Shown>{{manager.get(), &error, 0, nullptr}}));
}

TEST(KestrinErrorManagerImpl, ShowsTheSameErrorOnceUntilItIsDismissed) {
    Manager const manager = new KestrinErrorManagerImpl;
    RecordingShower shower;
    ErrorInfo const error = errorOf(3, 4, "System", "first");
    ErrorInfo const same = errorOf(3, 4, "ssl", "another text, another domain of the same number");
    EXPECT_EQ(manager->showError(&shower, error, nullptr), 77);
    EXPECT_EQ(manager->showError(&shower, error, nullptr), 0);
    EXPECT_EQ(manager->showError(&shower, same, nullptr), 0);
    EXPECT_EQ(shower.shown.size(), 1U);
    EXPECT_EQ(manager->showError(&shower, errorOf(3, 5), nullptr), 77);
    EXPECT_EQ(manager->showError(&shower, errorOf(4, 4), nullptr), 77);
    EXPECT_EQ(manager->showError(&shower, errorOf(3, 4, "curl"), nullptr), 77);

    manager->notifyErrorAlertDismissed(same);
    EXPECT_EQ(manager->showError(&shower, error, nullptr), 77);
    EXPECT_EQ(shower.shown.size(), 5U);
}

TEST(KestrinErrorManagerImpl, TakesADismissalOfWhatIsNotShown) {
    Manager const manager = managerAt(1);
    EXPECT_EQ(writtenBy([&] { manager->notifyErrorAlertDismissed(errorOf(1, 1)); }), Written{});
}

TEST(KestrinErrorManagerImpl, CountsAnErrorAsShownWithoutAShower) {
    Manager const manager = new KestrinErrorManagerImpl;
    RecordingShower shower;
    EXPECT_EQ(manager->showError(nullptr, errorOf(1, 2), nullptr), 0);
    EXPECT_EQ(manager->showError(&shower, errorOf(1, 2), nullptr), 0);
    EXPECT_TRUE(shower.shown.empty());
    manager->notifyErrorAlertDismissed(errorOf(1, 2));
    EXPECT_EQ(manager->showError(&shower, errorOf(1, 2), nullptr), 77);
}

TEST(KestrinErrorManagerImpl, DeliberateNoFlagIsSetAtLogLevel0) {
    for (int const verbose : {0, -1}) {
        Manager const manager = managerAt(verbose);
        RecordingShower shower;
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 1), nullptr), 77);
        EXPECT_EQ(manager->showError(&shower, globalNetworkFailure(3, 2), nullptr), 77);
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 3));
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 31));
        manager->setErrorOfType(NETWORK, 3);
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 3));
    }
}

TEST(KestrinErrorManagerImpl, HoldsBackNetworkFailuresOfAFlaggedComponent) {
    Manager const manager = managerAt(1);
    RecordingShower shower;
    writtenBy([&] {
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 1), nullptr), 77);
        EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 3));
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 4));
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 2), nullptr), 0);
        manager->notifyErrorAlertDismissed(networkFailure(3, 1));
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 2), nullptr), 0);
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 1), nullptr), 0);
        EXPECT_EQ(manager->showError(&shower, networkFailure(4, 2), nullptr), 77);
        // What is no network failure does not look at the flags.
        EXPECT_EQ(manager->showError(&shower, errorOf(3, 9), nullptr), 77);

        manager->clearErrorOfType(NETWORK, 3);
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 2), nullptr), 77);
        manager->clearErrorForAllComponents(NETWORK);
        EXPECT_EQ(manager->showError(&shower, networkFailure(3, 5), nullptr), 77);
    });
}

TEST(KestrinErrorManagerImpl, SetsFlagsAlsoWhereTheErrorIsBeingShown) {
    Manager const manager = managerAt(0);
    RecordingShower shower;
    manager->showError(&shower, networkFailure(3, 1), nullptr);
    manager->setVerbose(1);
    writtenBy([&] { EXPECT_EQ(manager->showError(&shower, networkFailure(3, 1), nullptr), 0); });
    EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 3));
}

TEST(KestrinErrorManagerImpl, SetsTheGlobalFlagByItsHint) {
    struct Row {
        char const * hint;
        bool isGlobal;
    };
    for (Row const & row : {Row{"1", true}, Row{"true", true}, Row{"YES", true}, Row{"yes", true},
                            Row{"TRUE", false}, Row{"Yes", false}, Row{"True", false},
                            Row{"0", false}, Row{"", false}, Row{"y", false}}) {
        SCOPED_TRACE(row.hint);
        Manager const manager = managerAt(1);
        RecordingShower shower;
        writtenBy(
            [&] { manager->showError(&shower, globalNetworkFailure(3, 1, row.hint), nullptr); });
        EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 3));
        EXPECT_EQ(manager->hasErrorOfType(NETWORK, 4), row.isGlobal);
        EXPECT_EQ(manager->hasErrorOfType(NETWORK, 31), row.isGlobal);
    }
}

TEST(KestrinErrorManagerImpl, IgnoresTheGlobalHintOfOtherErrors) {
    Manager const manager = managerAt(1);
    RecordingShower shower;
    writtenBy([&] {
        manager->showError(
            &shower, withHint(errorOf(3, 1), ErrorInfo::OrvKey_GlobalErrorHint, "yes"), nullptr);
    });
    EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 3));
    EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 31));
}

TEST(KestrinErrorManagerImpl, ClearsTheGlobalFlagWithAnyComponent) {
    Manager const manager = managerAt(1);
    writtenBy([&] {
        manager->setErrorOfType(NETWORK, 3);
        manager->setErrorOfType(NETWORK, 5);
        manager->setErrorOfType(NETWORK, 31);
        EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 17));
        manager->clearErrorOfType(NETWORK, 3);
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 17));
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 3));
        EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 5));
    });
}

TEST(KestrinErrorManagerImpl, TakesComponentsModulo32) {
    Manager const manager = managerAt(1);
    writtenBy([&] {
        manager->setErrorOfType(NETWORK, 33);
        EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 1));
        manager->clearErrorOfType(NETWORK, 65);
        EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 33));
        manager->setErrorOfType(NETWORK, -1);
        EXPECT_TRUE(manager->hasErrorOfType(NETWORK, 12));
    });
}

TEST(KestrinErrorManagerImpl, KnowsNoTypeBeyondTheLast) {
    Manager const manager = managerAt(1);
    writtenBy([&] {
        for (int type = 0; type <= ERRORTYPE_LAST; ++type) {
            manager->setErrorOfType(static_cast<KestrinErrorTypeEnum>(type), 31);
        }
    });
    for (KestrinErrorTypeEnum const type : {TYPE_8, TYPE_BELOW_0}) {
        EXPECT_FALSE(manager->hasErrorOfType(type, 31));
        EXPECT_EQ(writtenBy([&] {
                      manager->clearErrorOfType(type, 31);
                      manager->clearErrorForAllComponents(type);
                  }),
                  Written{});
    }
    for (int type = 0; type <= ERRORTYPE_LAST; ++type) {
        EXPECT_TRUE(manager->hasErrorOfType(static_cast<KestrinErrorTypeEnum>(type), 31)) << type;
    }
}

TEST(KestrinErrorManagerImpl, KeepsTypesApart) {
    Manager const manager = managerAt(1);
    writtenBy([&] { manager->setErrorOfType(ERRORTYPE_SYSTEM_ERROR, 2); });
    EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 2));
    EXPECT_TRUE(manager->hasErrorOfType(ERRORTYPE_SYSTEM_ERROR, 2));
    writtenBy([&] { manager->clearErrorForAllComponents(NETWORK); });
    EXPECT_TRUE(manager->hasErrorOfType(ERRORTYPE_SYSTEM_ERROR, 2));
}

// The log, to the byte.

TEST(KestrinErrorManagerImpl, DeliberateErrorsAreLoggedWithoutALineFeed) {
    Manager const manager = managerAt(1);
    RecordingShower shower;
    ErrorInfo const error =
        errorOf(2, 9, KestrinConstants::ErrorDomain_Kestrin, "100% of \x8e\xb8\x94s");
    EXPECT_EQ(writtenBy([&] { manager->showError(&shower, error, nullptr); }),
              (Written{"",
                       "[errorManager]error 2:101:9(orvane.ErrorDomain.Kestrin:9): "
                       "100% of \x8e\xb8\x94s"}));
}

TEST(KestrinErrorManagerImpl, LogsWhatItHoldsBack) {
    Manager const manager = managerAt(2);
    RecordingShower shower;
    ErrorInfo const other = errorOf(1, 2, "curl", "slow");
    writtenBy([&] { manager->showError(&shower, other, nullptr); });
    EXPECT_EQ(writtenBy([&] { manager->showError(&shower, other, nullptr); }),
              (Written{"",
                       "[errorManager]error 1:4:2(curl:2): slow"
                       "[errorManager]ignored error 1:4:2@curl: already being shown\n"}));
}

TEST(KestrinErrorManagerImpl, DeliberateFlagsAndIgnoredNetworkFailuresAreLoggedWithoutALineFeed) {
    Manager const manager = managerAt(1);
    RecordingShower shower;
    EXPECT_EQ(writtenBy([&] { manager->showError(&shower, globalNetworkFailure(3, 1), nullptr); }),
              (Written{"[errorManager]set 0 error flag for component 3"
                       "[errorManager]set 0 error flag for component 31",
                       "[errorManager]error 3:1:1(System:1): broken"}));
    EXPECT_EQ(writtenBy([&] { manager->showError(&shower, networkFailure(9, 8), nullptr); }),
              (Written{"",
                       "[errorManager]error 9:1:8(System:8): broken"
                       "[errorManager]ignored network failure 9:1:8@System"}));
}

TEST(KestrinErrorManagerImpl, LogsAFlagOnlyWhenItIsNew) {
    Manager const manager = managerAt(1);
    EXPECT_EQ(writtenBy([&] { manager->setErrorOfType(ERRORTYPE_LAST, 33); }),
              (Written{"[errorManager]set 7 error flag for component 33", ""}));
    EXPECT_EQ(writtenBy([&] { manager->setErrorOfType(ERRORTYPE_LAST, 1); }), Written{});
}

TEST(KestrinErrorManagerImpl, LogsTheFlagsThatItClears) {
    Manager const manager = managerAt(1);
    auto const set = [&](int component) {
        writtenBy([&] { manager->setErrorOfType(NETWORK, component); });
    };
    EXPECT_EQ(writtenBy([&] { manager->clearErrorOfType(NETWORK, 3); }), Written{});
    set(3);
    EXPECT_EQ(writtenBy([&] { manager->clearErrorOfType(NETWORK, 3); }),
              (Written{"[errorManager]cleared error flag 0 for component 3\n", ""}));
    set(3);
    set(31);
    EXPECT_EQ(writtenBy([&] { manager->clearErrorOfType(NETWORK, 3); }),
              (Written{"[errorManager]cleared error flag 0 for the global component\n"
                       "[errorManager]cleared error flag 0 for component 3\n",
                       ""}));
    set(31);
    EXPECT_EQ(writtenBy([&] { manager->clearErrorOfType(NETWORK, 31); }),
              (Written{"[errorManager]cleared error flag 0 for the global component\n"
                       "[errorManager]cleared error flag 0 for component 31\n",
                       ""}));
    EXPECT_EQ(writtenBy([&] { manager->clearErrorForAllComponents(NETWORK); }), Written{});
    set(5);
    EXPECT_EQ(writtenBy([&] { manager->clearErrorForAllComponents(NETWORK); }),
              (Written{"[errorManager]cleared error flag 0 for all components\n", ""}));
}

TEST(KestrinErrorManagerImpl, ClearsSilentlyAtLogLevel0) {
    Manager const manager = managerAt(1);
    writtenBy([&] { manager->setErrorOfType(NETWORK, 3); });
    manager->setVerbose(0);
    EXPECT_EQ(writtenBy([&] { manager->clearErrorOfType(NETWORK, 3); }), Written{});
    EXPECT_FALSE(manager->hasErrorOfType(NETWORK, 3));
}

TEST(KestrinErrorManagerImpl, WritesNothingAtLogLevel0) {
    Manager const manager = managerAt(0);
    RecordingShower shower;
    EXPECT_EQ(writtenBy([&] {
                  manager->showError(&shower, globalNetworkFailure(3, 1), nullptr);
                  manager->showError(&shower, globalNetworkFailure(3, 1), nullptr);
                  manager->notifyErrorAlertDismissed(networkFailure(3, 1));
              }),
              Written{});
}

// Showers.

/// Closes the alert before it returns, as one that waits for the user does.
class ModalShower : public KestrinErrorShower {
public:
    int showErrorAlert(KestrinErrorManager * manager, ErrorInfo const & error, int /*kind*/,
                       CWnd * parent) override {
        if (++depth == 1) {
            EXPECT_EQ(manager->showError(this, error, parent), 0);  // the same one from inside
            EXPECT_EQ(manager->showError(this, errorOf(30, 30), parent), 2);
        }
        manager->notifyErrorAlertDismissed(error);
        return depth;
    }

    int depth = 0;
};

TEST(KestrinErrorManagerImpl, MayBeCalledFromInsideAShower) {
    Manager const manager = new KestrinErrorManagerImpl;
    ModalShower shower;
    EXPECT_EQ(manager->showError(&shower, errorOf(1, 1), nullptr), 2);
    EXPECT_EQ(shower.depth, 2);
}

class ThrowingShower : public KestrinErrorShower {
public:
    int showErrorAlert(KestrinErrorManager *, ErrorInfo const &, int, CWnd *) override { throw 5; }
};

TEST(KestrinErrorManagerImpl, PassesOnWhatAShowerThrows) {
    Manager const manager = new KestrinErrorManagerImpl;
    ThrowingShower shower;
    EXPECT_THROW(manager->showError(&shower, errorOf(1, 1), nullptr), int);
    EXPECT_EQ(manager->showError(&shower, errorOf(1, 1), nullptr), 0);
}

// The interface.

class RoutedManager : public KestrinErrorManager {
public:
    bool isNetworkFailure(ErrorInfo const &) const override { return false; }
    CString getInternalErrorCode(ErrorInfo const &) const override { return ""; }
    bool hasErrorOfType(KestrinErrorTypeEnum, int) const override { return false; }
    void clearErrorOfType(KestrinErrorTypeEnum, int) override {}
    void clearErrorForAllComponents(KestrinErrorTypeEnum) override {}
    void setErrorOfType(KestrinErrorTypeEnum, int) override {}
    int getErrorDomainCode(CString) const override { return 0; }
    int showError(KestrinErrorShower *, ErrorInfo const &, CWnd *) override { return 0; }
    void notifyErrorAlertDismissed(ErrorInfo const &) override {}
};

TEST(KestrinErrorManager, TakesOverTheCountWhenAssigned) {
    RoutedManager left;
    RefCountedPtr<KestrinErrorManager> const right = new RoutedManager;
    KestrinErrorManager & target = left;
    target = *right;
    EXPECT_EQ(left.getRefCount(), 1);
    EXPECT_EQ(RoutedManager(left).getRefCount(), 0);
}

// Random calls against a plain model.

struct Model {
    int verbose = 0;
    std::array<std::array<bool, 32>, 8> flags{};
    std::set<std::array<int, 3>> shown;

    bool has(std::size_t type, int component) const {
        return flags[type][31] || flags[type][static_cast<std::size_t>(component % 32)];
    }
    void set(std::size_t type, int component) {
        if (verbose > 0) {
            flags[type][static_cast<std::size_t>(component % 32)] = true;
        }
    }
    void clear(std::size_t type, int component) {
        flags[type][31] = false;
        flags[type][static_cast<std::size_t>(component % 32)] = false;
    }
    /// The kind shown, or nothing.
    std::vector<int> show(int component, int code, bool isNetwork, bool isGlobal) {
        if (isNetwork) {
            if (has(0, component)) {
                return {};
            }
            set(0, component);
            if (isGlobal) {
                set(0, 31);
            }
        }
        if (!shown.insert({component, 1, code}).second) {
            return {};
        }
        return {isNetwork ? 0 : 1};
    }
};

TEST(KestrinErrorManagerImpl, AgreesWithAPlainModel) {
    std::mt19937 random(20260401);
    auto const below = [&](unsigned int bound) { return static_cast<int>(random() % bound); };
    writtenBy([&] {
        for (int round = 0; round < 20; ++round) {
            Manager const manager = new KestrinErrorManagerImpl;
            Model model;
            for (int step = 0; step < 500; ++step) {
                int const component = below(4) == 0 ? 31 : below(40);
                int const code = below(3);
                int const type = below(8);
                auto const typeEnum = static_cast<KestrinErrorTypeEnum>(type);
                auto const typeIndex = static_cast<std::size_t>(type);
                switch (below(8)) {
                    case 0:
                        manager->setVerbose(model.verbose = below(3) - 1);
                        break;
                    case 1:
                        manager->setErrorOfType(typeEnum, component);
                        model.set(typeIndex, component);
                        break;
                    case 2:
                        manager->clearErrorOfType(typeEnum, component);
                        model.clear(typeIndex, component);
                        break;
                    case 3:
                        manager->clearErrorForAllComponents(typeEnum);
                        model.flags[typeIndex] = {};
                        break;
                    case 4:
                        manager->notifyErrorAlertDismissed(errorOf(component, code));
                        model.shown.erase({component, 1, code});
                        break;
                    default: {
                        bool const isNetwork = below(2) == 0;
                        bool const isGlobal = below(4) == 0;
                        ErrorInfo error =
                            isNetwork ? networkFailure(component, code) : errorOf(component, code);
                        if (isGlobal) {
                            error = withHint(error, ErrorInfo::OrvKey_GlobalErrorHint, "true");
                        }
                        RecordingShower shower;
                        int const result = manager->showError(&shower, error, nullptr);
                        std::vector<int> const kinds =
                            model.show(component, code, isNetwork, isGlobal);
                        ASSERT_EQ(shower.shown.size(), kinds.size()) << round << " " << step;
                        ASSERT_EQ(result, kinds.empty() ? 0 : 77);
                        if (!kinds.empty()) {
                            ASSERT_EQ(shower.shown[0].kind, kinds[0]);
                        }
                    }
                }
                ASSERT_EQ(manager->hasErrorOfType(typeEnum, component),
                          model.has(typeIndex, component))
                    << round << " " << step;
            }
        }
    });
}

}  // namespace
}  // namespace tvk
