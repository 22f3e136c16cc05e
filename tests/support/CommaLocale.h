#pragma once

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace tvk::test {

/// Puts the process under a locale whose decimal mark is a comma, for as long as it lives: an
/// installed one, else one that localedef makes in a folder of its own. isSet() is false where neither
/// can be had.
class CommaLocale {
public:
    CommaLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
        for (char const * name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "fr_FR"}) {
            if (take(name)) {
                return;
            }
        }
        makeOne();
    }
    CommaLocale(CommaLocale const &) = delete;
    CommaLocale & operator=(CommaLocale const &) = delete;
    ~CommaLocale() {
        std::setlocale(LC_ALL, before_.c_str());
        if (!folder_.empty()) {
            unsetenv("LOCPATH");
            std::error_code ignored;
            std::filesystem::remove_all(folder_, ignored);
        }
    }

    bool isSet() const { return isSet_; }

private:
    bool take(char const * name) {
        isSet_ = std::setlocale(LC_ALL, name) != nullptr &&
                 std::string(std::localeconv()->decimal_point) == ",";
        return isSet_;
    }

    void makeOne() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "tvk-locale-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            return;
        }
        folder_ = pattern;
        std::string const command =
            "localedef -i de_DE -f ISO-8859-1 '" + folder_ + "/de_DE' >/dev/null 2>&1";
        // localedef answers 1 for mere warnings too; what counts is whether the locale can be taken.
        if (std::system(command.c_str()) == -1) {
            return;
        }
        setenv("LOCPATH", folder_.c_str(), 1);
        take("de_DE");
    }

    std::string before_;
    std::string folder_;
    bool isSet_ = false;
};

}  // namespace tvk::test
