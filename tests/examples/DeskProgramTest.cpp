// The program on a display that nobody sees.

#include <gtest/gtest.h>
#include <png.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "tests/examples/RunProgram.h"

extern char ** environ;

namespace tvk::test {

namespace {

/// An X server of the test's own, on a display that it chooses itself, and the environment to go with it.
class Display {
public:
    Display() {
        int ends[2] = {-1, -1};
        if (pipe(ends) != 0) {
            return;
        }
        std::string const writing = std::to_string(ends[1]);
        char const * const words[] = {TVK_XVFB,       "-displayfd", writing.c_str(), "-screen", "0",
                                      "1280x1024x24", "-nolisten",  "tcp",           nullptr};
        bool const runs = posix_spawn(&server_, TVK_XVFB, nullptr, nullptr,
                                      const_cast<char * const *>(words), environ) == 0;
        close(ends[1]);
        std::string number;
        char digit = 0;
        while (runs && read(ends[0], &digit, 1) == 1 && digit != '\n') {
            number += digit;
        }
        close(ends[0]);
        if (!number.empty()) {
            name_ = ":" + number;
            setenv("DISPLAY", name_.c_str(), 1);
            setenv("LSAN_OPTIONS", "suppressions=" TVK_DESK_LEAKS ":print_suppressions=0", 1);
        }
    }
    Display(Display const &) = delete;
    Display & operator=(Display const &) = delete;
    ~Display() {
        if (server_ > 0) {
            kill(server_, SIGTERM);
            waitpid(server_, nullptr, 0);
        }
    }

    bool isThere() const { return !name_.empty(); }

private:
    pid_t server_ = -1;
    std::string name_;
};

struct Picture {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<unsigned char> bytes;  // red, green, blue

    std::size_t countOf(unsigned int colour) const {
        std::size_t count = 0;
        for (std::size_t at = 0; at + 2 < bytes.size(); at += 3) {
            count += colourAt(at) == colour ? 1 : 0;
        }
        return count;
    }
    std::set<unsigned int> colours() const {
        std::set<unsigned int> result;
        for (std::size_t at = 0; at + 2 < bytes.size(); at += 3) {
            result.insert(colourAt(at));
        }
        return result;
    }

private:
    unsigned int colourAt(std::size_t at) const {
        return static_cast<unsigned int>(bytes[at] << 16U | bytes[at + 1] << 8U | bytes[at + 2]);
    }
};

Picture pictureIn(std::string const & fileName) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    Picture picture;
    if (png_image_begin_read_from_file(&image, fileName.c_str()) == 0) {
        return picture;
    }
    image.format = PNG_FORMAT_RGB;
    picture.bytes.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr) != 0) {
        picture.width = image.width;
        picture.height = image.height;
    }
    return picture;
}

TEST(DeskProgram, ShowsALiveSession) {
    Display const display;
    ASSERT_TRUE(display.isThere());
    std::string const file = testing::TempDir() + "desk-" + std::to_string(getpid()) + ".png";
    Outcome const outcome =
        runProgram(TVK_DESK, {"--login", "--screenshot", file, "--seconds", "2"});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;

    Picture const picture = pictureIn(file);
    std::remove(file.c_str());
    EXPECT_EQ(picture.width, 1140U);
    EXPECT_EQ(picture.height, 740U);
    EXPECT_GT(picture.colours().size(), 50U) << "a blank window has few";
    constexpr unsigned int UP = 0xf26d6d;
    constexpr unsigned int DOWN = 0x5ab0f2;
    constexpr std::size_t CANDLES = 500;  // pixels; texts alone have fewer
    EXPECT_GT(picture.countOf(UP) + picture.countOf(DOWN), CANDLES) << "there is no chart";
}

TEST(DeskProgram, SaysWhereAScreenshotCannotBeWritten) {
    Display const display;
    ASSERT_TRUE(display.isThere());
    Outcome const outcome =
        runProgram(TVK_DESK, {"--screenshot", "/nonexistent/desk.png", "--seconds", "1"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_NE(outcome.err.find("cannot write /nonexistent/desk.png"), std::string::npos);
}

TEST(DeskProgram, ExplainsItself) {
    Outcome const help = runProgram(TVK_DESK, {"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_EQ(help.out.rfind("Usage: desk", 0), 0U);
    Outcome const mistake = runProgram(TVK_DESK, {"--colour"});
    EXPECT_EQ(mistake.exitStatus, 2);
    EXPECT_NE(mistake.err.find("there is no option --colour"), std::string::npos);
}

}  // namespace

}  // namespace tvk::test
