// libjpeg reports errors through error_exit, which must not return: it
// longjmps back to Compress, a C-style function with nothing to destroy, so
// the jump crosses only libjpeg's own frames.

#include <csetjmp>
#include <cstdlib>

// jpeglib.h uses FILE and size_t without including their headers.
// clang-format off
#include <cstdio>
#include <jpeglib.h>
// clang-format on

#include "sandbox/image_encoders.h"

namespace obolo::sandbox {
namespace {

struct JpegWrite {
  jpeg_error_mgr errors;  // first: libjpeg hands its address back as cinfo->err
  jpeg_compress_struct cinfo;
  std::jmp_buf jump;
  unsigned char* output = nullptr;  // malloc'ed by libjpeg
  unsigned long size = 0;
};

[[noreturn]] void LeaveOnError(j_common_ptr cinfo) {
  std::longjmp(reinterpret_cast<JpegWrite*>(cinfo->err)->jump, 1);
}

void Silent(j_common_ptr) {}

// Encodes `rgb` (3 bytes a pixel) into write.output; false on an error.
bool Compress(JpegWrite& write, const unsigned char* rgb, int width, int height, int quality,
              bool progressive) {
  if (setjmp(write.jump)) return false;
  jpeg_create_compress(&write.cinfo);
  jpeg_mem_dest(&write.cinfo, &write.output, &write.size);
  write.cinfo.image_width = static_cast<JDIMENSION>(width);
  write.cinfo.image_height = static_cast<JDIMENSION>(height);
  write.cinfo.input_components = 3;
  write.cinfo.in_color_space = JCS_RGB;
  jpeg_set_defaults(&write.cinfo);
  jpeg_set_quality(&write.cinfo, quality, TRUE);
  if (progressive) jpeg_simple_progression(&write.cinfo);
  jpeg_start_compress(&write.cinfo, TRUE);
  while (write.cinfo.next_scanline < write.cinfo.image_height) {
    auto row = const_cast<JSAMPROW>(rgb + std::size_t{write.cinfo.next_scanline} * width * 3);
    jpeg_write_scanlines(&write.cinfo, &row, 1);
  }
  jpeg_finish_compress(&write.cinfo);
  return true;
}

void Destroy(JpegWrite& write) {
  if (setjmp(write.jump)) return;
  jpeg_destroy_compress(&write.cinfo);
}

}  // namespace

std::string EncodeJpeg(int width, int height, const std::vector<Rgba>& pixels, int quality,
                       bool progressive) {
  std::vector<unsigned char> rgb;
  rgb.reserve(pixels.size() * 3);
  for (const Rgba& p : pixels) rgb.insert(rgb.end(), {p.r, p.g, p.b});

  JpegWrite write{};
  jpeg_std_error(&write.errors);
  write.errors.error_exit = LeaveOnError;
  write.errors.output_message = Silent;
  write.cinfo.err = &write.errors;
  const bool done = Compress(write, rgb.data(), width, height, quality, progressive);
  Destroy(write);
  std::string jpeg;
  if (done && write.output) jpeg.assign(reinterpret_cast<const char*>(write.output), write.size);
  std::free(write.output);
  return jpeg;
}

}  // namespace obolo::sandbox
