#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace tvk::test {

/// An empty folder of the test's own, gone with all that is in it at the end of the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tvk-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no folder could be made");
        }
        path_ = pattern;
    }
    TemporaryFolder(TemporaryFolder const &) = delete;
    TemporaryFolder & operator=(TemporaryFolder const &) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::filesystem::path const & path() const { return path_; }

    std::filesystem::path write(std::string const & name, std::string_view content) const {
        std::filesystem::path const path = path_ / name;
        std::ofstream stream(path, std::ios::binary);
        stream.write(content.data(), static_cast<std::streamsize>(content.size()));
        if (!stream.flush()) {
            throw std::runtime_error("a file could not be written");
        }
        return path;
    }

private:
    std::filesystem::path path_;
};

}  // namespace tvk::test
