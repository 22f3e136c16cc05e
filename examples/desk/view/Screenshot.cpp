#include "examples/desk/view/Screenshot.h"

#include <FL/Fl_Image_Surface.H>
#include <png.h>

#include <cstring>
#include <memory>

namespace desk {

bool writeScreenshot(Fl_Window & window, std::string const & fileName) {
    Fl_Image_Surface surface(window.w(), window.h());
    surface.set_current();
    surface.draw(&window);
    std::unique_ptr<Fl_RGB_Image> const image(surface.image());
    Fl_Display_Device::display_device()->set_current();

    png_image picture;
    std::memset(&picture, 0, sizeof picture);
    picture.version = PNG_IMAGE_VERSION;
    picture.width = static_cast<png_uint_32>(image->w());
    picture.height = static_cast<png_uint_32>(image->h());
    picture.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&picture, fileName.c_str(), 0, image->data()[0], image->ld(),
                                   nullptr) != 0;
}

}  // namespace desk
