// JPEG through libjpeg-turbo's libjpeg API.
//
// libjpeg reports an error by calling error_exit, which must not return. Here
// it longjmps back to a setjmp in one of the small C-style steps below; the
// only frames it leaves are libjpeg's own, so no C++ destructor is skipped.
// Everything with a destructor lives in DecodeJpeg, outside the steps.

#include <csetjmp>

// jpeglib.h uses FILE and size_t without including their headers.
// clang-format off
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include "toolkit/argb_pixels.h"
#include "toolkit/format_decoders.h"
#include "toolkit/image_decoder.h"

namespace obolo {
namespace {

// A progressive JPEG may carry any number of scans, each a pass over every
// block of the image; ordinary files have about ten. Past this many the file
// is refused rather than decoded for seconds.
constexpr int kMaxScans = 100;

// libjpeg's own memory beyond the pixels we hand it: a progressive file keeps
// all its coefficients (2 bytes per sample, up to four components), and the
// rest is row buffers. Needing more means the file is not a sane image.
constexpr long kMaxWorkingMemory = static_cast<long>(kMaxImagePixels * 4 * 2 + (16 << 20));

struct JpegRead {
  jpeg_error_mgr errors;  // first: libjpeg hands its address back as cinfo->err
  jpeg_progress_mgr progress;
  jpeg_decompress_struct cinfo;
  std::jmp_buf jump;
};

JpegRead& ReadOf(j_common_ptr cinfo) { return *reinterpret_cast<JpegRead*>(cinfo->err); }

[[noreturn]] void LeaveOnError(j_common_ptr cinfo) { std::longjmp(ReadOf(cinfo).jump, 1); }

// Warnings are silent, except that the data ended before the pixels did:
// libjpeg would fill the missing rows with grey, and we refuse the file.
void OnMessage(j_common_ptr cinfo, int level) {
  if (level < 0 && cinfo->err->msg_code == JWRN_JPEG_EOF) LeaveOnError(cinfo);
}

void OnProgress(j_common_ptr cinfo) {
  if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number > kMaxScans) LeaveOnError(cinfo);
}

void Silent(j_common_ptr) {}

// The steps. Each returns false when libjpeg failed inside it.

bool ReadHeader(JpegRead& read, const unsigned char* data, unsigned long size) {
  if (setjmp(read.jump)) return false;
  jpeg_create_decompress(&read.cinfo);
  read.cinfo.mem->max_memory_to_use = kMaxWorkingMemory;
  read.cinfo.progress = &read.progress;
  jpeg_mem_src(&read.cinfo, data, size);
  return jpeg_read_header(&read.cinfo, TRUE) == JPEG_HEADER_OK;
}

bool Start(JpegRead& read) {
  if (setjmp(read.jump)) return false;
  return jpeg_start_decompress(&read.cinfo) == TRUE;
}

// Reads every row into `pixels`, four bytes per pixel, `stride` bytes a row.
bool ReadRows(JpegRead& read, unsigned char* pixels, std::size_t stride) {
  if (setjmp(read.jump)) return false;
  while (read.cinfo.output_scanline < read.cinfo.output_height) {
    JSAMPROW row = pixels + read.cinfo.output_scanline * stride;
    if (jpeg_read_scanlines(&read.cinfo, &row, 1) != 1) return false;
  }
  return jpeg_finish_decompress(&read.cinfo) == TRUE;
}

void Destroy(JpegRead& read) {
  if (setjmp(read.jump)) return;
  jpeg_destroy_decompress(&read.cinfo);
}

// Four-colour JPEGs come decoded as C, M, Y, K bytes; Adobe's files (nearly
// all of them) store each inverted. A plain conversion without a colour
// profile, as browsers without colour management do.
void CmykToRgbaInPlace(DecodedImage& image, bool inverted) {
  auto* bytes = reinterpret_cast<unsigned char*>(image.pixels.data());
  for (std::size_t i = 0; i < image.pixels.size(); ++i, bytes += 4) {
    unsigned c = bytes[0], m = bytes[1], y = bytes[2], k = bytes[3];
    if (!inverted) c = 255 - c, m = 255 - m, y = 255 - y, k = 255 - k;
    bytes[0] = static_cast<unsigned char>(c * k / 255);
    bytes[1] = static_cast<unsigned char>(m * k / 255);
    bytes[2] = static_cast<unsigned char>(y * k / 255);
    bytes[3] = 255;
  }
}

bool Decode(JpegRead& read, const unsigned char* data, std::size_t size, std::optional<DecodedImage>& out) {
  if (!ReadHeader(read, data, size)) return false;
  jpeg_decompress_struct& cinfo = read.cinfo;
  if (!WithinPixelLimit(cinfo.image_width, cinfo.image_height)) return false;
  const bool four_colour = cinfo.jpeg_color_space == JCS_CMYK || cinfo.jpeg_color_space == JCS_YCCK;
  switch (cinfo.jpeg_color_space) {
    case JCS_GRAYSCALE:
    case JCS_RGB:
    case JCS_YCbCr:
      cinfo.out_color_space = JCS_EXT_RGBA;
      break;
    case JCS_CMYK:
    case JCS_YCCK:
      cinfo.out_color_space = JCS_CMYK;
      break;
    default:
      return false;
  }
  if (!Start(read)) return false;
  if (cinfo.output_components != 4 || cinfo.output_width != cinfo.image_width ||
      cinfo.output_height != cinfo.image_height) {
    return false;
  }
  DecodedImage image = BlankImage(cinfo.output_width, cinfo.output_height);
  if (!ReadRows(read, reinterpret_cast<unsigned char*>(image.pixels.data()), std::size_t{image.width} * 4)) {
    return false;
  }
  if (four_colour) CmykToRgbaInPlace(image, cinfo.saw_Adobe_marker);
  PremultiplyRgbaInPlace(image);  // opaque: only repacks
  out = std::move(image);
  return true;
}

}  // namespace

std::optional<DecodedImage> DecodeJpeg(std::string_view bytes) {
  JpegRead read{};
  jpeg_std_error(&read.errors);
  read.errors.error_exit = LeaveOnError;
  read.errors.emit_message = OnMessage;
  read.errors.output_message = Silent;
  read.progress.progress_monitor = OnProgress;
  read.cinfo.err = &read.errors;

  std::optional<DecodedImage> image;
  Decode(read, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), image);
  Destroy(read);
  return image;
}

}  // namespace obolo
