#include "picture_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "failure.h"
#include "stop.h"

namespace zo_tool {

namespace {

std::string lowerExtension(const std::string& path) {
  std::string extension = zo::fileExtension(path);
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return extension;
}

bool isJpegName(const std::string& extension) {
  return extension == ".jpg" || extension == ".jpeg";
}

/// Descriptor with an owner. Closing reports what the file system had put off until then.
class File {
 public:
  File(const std::string& path, int flags) : _fd(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
  ~File() { close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool isOpen() const { return _fd >= 0; }
  int descriptor() const { return _fd; }
  bool close() {
    if (_fd < 0) {
      return true;
    }
    const int result = ::close(_fd);
    _fd = -1;
    return result == 0;
  }

 private:
  int _fd;
};

/// The half-written picture beside the final one: deleted unless it was renamed.
class PartFile {
 public:
  explicit PartFile(const std::string& path) : _path(path) { setDoomedFile(_path.c_str()); }
  ~PartFile() {
    if (!_path.empty()) {
      unlink(_path.c_str());
    }
    setDoomedFile(nullptr);
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  const std::string& path() const { return _path; }
  bool renameTo(const std::string& path) {
    if (std::rename(_path.c_str(), path.c_str()) != 0) {
      return false;
    }
    _path.clear();
    return true;
  }

 private:
  std::string _path;
};

/// The file that a chain of symbolic links ends in, or the path itself.
std::string linkTarget(const std::string& path) {
  struct Freer {
    void operator()(char* p_text) const { std::free(p_text); }
  };
  const std::unique_ptr<char, Freer> p_real(realpath(path.c_str(), nullptr));
  return p_real ? std::string(p_real.get()) : path;
}

/// True for a device, a pipe or the like: it has to be written to, not replaced.
bool isSpecialFile(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

/// True when the file ends as a complete picture of its kind and shape does. The image coders report full
/// disks only while they write, not when the last bytes reach the disk.
bool isComplete(const std::string& path, const std::string& extension, const zo::Size& size) {
  File file(path, O_RDONLY);
  struct stat status;
  if (!file.isOpen() || fstat(file.descriptor(), &status) != 0 || status.st_size < 12) {
    return false;
  }
  unsigned char tail[12];
  if (pread(file.descriptor(), tail, sizeof tail, status.st_size - static_cast<off_t>(sizeof tail)) !=
      static_cast<ssize_t>(sizeof tail)) {
    return false;
  }
  if (isJpegName(extension)) {
    return tail[10] == 0xFF && tail[11] == 0xD9;
  }
  if (extension == ".png") {
    return std::memcmp(tail + 4, "IEND", 4) == 0;
  }
  const int channels = extension == ".ppm" ? 3 : 1;
  return status.st_size >= static_cast<off_t>(size.width) * size.height * channels;
}

/// Why nothing more can be written to that file, or null when more can.
const char* writeObstacle(const std::string& path) {
  File file(path, O_WRONLY | O_APPEND);
  if (!file.isOpen()) {
    return std::strerror(errno);
  }
  const char block[4096] = {};
  errno = 0;
  if (write(file.descriptor(), block, sizeof block) != static_cast<ssize_t>(sizeof block)) {
    return std::strerror(errno != 0 ? errno : ENOSPC);
  }
  return file.close() ? nullptr : std::strerror(errno);
}

/// Writes the file's bytes to a device or pipe.
bool copyInto(const std::string& path, const std::string& device) {
  File from(path, O_RDONLY);
  File to(device, O_WRONLY);
  char block[65536];
  ssize_t got = from.isOpen() && to.isOpen() ? read(from.descriptor(), block, sizeof block) : -1;
  while (got > 0) {
    for (ssize_t done = 0; done < got;) {
      const ssize_t written = write(to.descriptor(), block + done, static_cast<std::size_t>(got - done));
      if (written <= 0) {
        return false;
      }
      done += written;
    }
    got = read(from.descriptor(), block, sizeof block);
  }
  return got == 0 && to.close();
}

/// Where the picture is put together: beside the final file, or elsewhere when it goes to a device.
std::string partPath(const std::string& target, bool is_special, const std::string& extension) {
  const std::size_t slash = target.rfind('/');
  std::string folder = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
  if (is_special) {
    const char* p_folder = std::getenv("TMPDIR");
    folder = std::string(p_folder != nullptr && *p_folder != '\0' ? p_folder : "/tmp") + "/";
  }
  return folder + ".zo-video-" + std::to_string(getpid()) + extension;
}

void encode(const std::string& path, const std::string& extension, const zo::Frame& picture, int quality) {
  if (isJpegName(extension)) {
    zo::imageWrite(path, picture, quality);
  } else {
    zo::imageSave(path, picture, quality);
  }
}

}  // namespace

void checkPictureName(const std::string& path) {
  const std::string extension = lowerExtension(path);
  for (const char* p_known : {".jpg", ".jpeg", ".png", ".pgm", ".ppm"}) {
    if (extension == p_known) {
      return;
    }
  }
  fail(zo::ZO_STATUS_NOT_SUPPORTED, "'%s': the name has to end in .jpg, .jpeg, .png, .pgm or .ppm",
       path.c_str());
}

void savePicture(const std::string& path, const zo::Frame& picture, int quality) {
  checkPictureName(path);
  const std::string extension = lowerExtension(path);
  const bool is_special = isSpecialFile(path);
  const std::string target = is_special ? path : linkTarget(path);
  struct stat old;
  const bool replaces = !is_special && stat(target.c_str(), &old) == 0;
  if (replaces && access(target.c_str(), W_OK) != 0) {
    fail(zo::ZO_STATUS_OPEN_ERROR, "cannot write '%s': %s", path.c_str(), std::strerror(errno));
  }
  PartFile part(partPath(target, is_special, extension));
  {
    File file(part.path(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    // What others may not read, they may not read while it is written either.
    const bool opened = file.isOpen() && (!replaces || fchmod(file.descriptor(), 0600) == 0);
    if (!opened) {
      fail(zo::ZO_STATUS_OPEN_ERROR, "cannot write '%s': %s", path.c_str(), std::strerror(errno));
    }
  }
  try {
    encode(part.path(), extension, picture, quality);
  } catch (const zo::Exception& e) {
    const char* p_obstacle = writeObstacle(part.path());
    if (p_obstacle != nullptr) {
      fail(zo::ZO_STATUS_WRITE_ERROR, "cannot write '%s': %s", path.c_str(), p_obstacle);
    }
    const zo::Exception& reason = e.previous() != nullptr ? *e.previous() : e;
    fail(reason.status(), "cannot write '%s': %s", path.c_str(), reason.what());
  }
  if (!isComplete(part.path(), extension, picture.size())) {
    const char* p_obstacle = writeObstacle(part.path());
    fail(zo::ZO_STATUS_WRITE_ERROR, "cannot write '%s': %s", path.c_str(),
         p_obstacle != nullptr ? p_obstacle : "the file is incomplete");
  }
  checkStop();
  errno = 0;
  const bool written = is_special ? copyInto(part.path(), target)
                                  : (!replaces || chmod(part.path().c_str(), old.st_mode & 0777) == 0) &&
                                        part.renameTo(target);
  if (!written) {
    fail(zo::ZO_STATUS_WRITE_ERROR, "cannot write '%s': %s", path.c_str(), std::strerror(errno));
  }
}

}  // namespace zo_tool
