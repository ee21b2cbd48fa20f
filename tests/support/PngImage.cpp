#include "support/PngImage.h"

#include <png.h>

#include <stdexcept>

namespace MrpTest {

PngImage PngImage::read(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    throw std::runtime_error("cannot read PNG " + path + ": " + image.message);
  }
  image.format = PNG_FORMAT_RGBA;
  PngImage read;
  read.width = image.width;
  read.height = image.height;
  read.rgba.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, read.rgba.data(), 0, nullptr)) {
    png_image_free(&image);
    throw std::runtime_error("cannot decode PNG " + path + ": " + image.message);
  }
  return read;
}

}  // namespace MrpTest
