#ifndef ZO_TESTS_SUPPORT_ZO_TEST_FILES_H
#define ZO_TESTS_SUPPORT_ZO_TEST_FILES_H

#include <cstddef>
#include <string>

namespace zo {
namespace test {

/// A fresh directory that disappears, with all that is in it, together with this object.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return _path; }
  /// Path of a file of that name in the directory; nothing is created.
  std::string file(const std::string& name) const { return _path + "/" + name; }

 private:
  std::string _path;
};

/// Makes a directory the working one while it lives. Throws std::runtime_error.
class WorkingDir {
 public:
  explicit WorkingDir(const std::string& path);
  ~WorkingDir();
  WorkingDir(const WorkingDir&) = delete;
  WorkingDir& operator=(const WorkingDir&) = delete;

 private:
  std::string _saved_path;
};

/// The bytes of a file. Throws std::runtime_error.
std::string readFile(const std::string& path);
/// Creates or replaces a file. Throws std::runtime_error.
void writeFile(const std::string& path, const std::string& bytes);

/// The folder with real clips that ZO_TEST_MEDIA points at; empty when there is none, and then tests that
/// want one are skipped.
std::string realMediaDir();

/// Sends standard error to a file while it lives; text() is what arrived so far.
class StderrCapture {
 public:
  StderrCapture();
  ~StderrCapture();
  StderrCapture(const StderrCapture&) = delete;
  StderrCapture& operator=(const StderrCapture&) = delete;

  std::string text() const;

 private:
  TempDir _directory;
  int _saved_fd;
};

}  // namespace test
}  // namespace zo

#endif
