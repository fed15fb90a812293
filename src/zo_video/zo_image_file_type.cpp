#include "zo_image_file_type.h"

#include <cctype>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_path.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_image_io";
// Callers recognise this error by its line, which therefore stays what it is.
constexpr int LINE_UNSUPPORTED_EXTENSION = 817;

struct KnownExtension {
  const char* text;
  SimdImageFileType type;
};

constexpr KnownExtension KNOWN_EXTENSIONS[] = {{".jpg", SimdImageFileJpeg},
                                               {".jpeg", SimdImageFileJpeg},
                                               {".png", SimdImageFilePng},
                                               {".pgm", SimdImageFilePgmBin},
                                               {".ppm", SimdImageFilePpmBin}};

}  // namespace

SimdImageFileType detectFileType(const std::string& path) {
  std::string extension = fileExtension(path);
  for (char& character : extension) {
    character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  for (const KnownExtension& known : KNOWN_EXTENSIONS) {
    if (extension == known.text) {
      return known.type;
    }
  }
  throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, "detectFileType", SOURCE_FILE, LINE_UNSUPPORTED_EXTENSION,
                  "Unsupported image file extension %s", extension.c_str());
}

}  // namespace zo
