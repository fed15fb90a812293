#include "zo_tool_program.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace zo {
namespace test {

namespace {

std::vector<std::string> commandLine(const std::vector<std::string>& arguments) {
  std::vector<std::string> words;
  const std::string emulator = ZO_TOOL_EMULATOR;
  for (std::size_t begin = 0; begin < emulator.size();) {
    const std::size_t end = std::min(emulator.find('|', begin), emulator.size());
    words.push_back(emulator.substr(begin, end - begin));
    begin = end + 1;
  }
  words.push_back(ZO_TOOL_PROGRAM);
  words.insert(words.end(), arguments.begin(), arguments.end());
  return words;
}

void redirect(int fd, const std::string& path, int flags) {
  const int file = ::open(path.c_str(), flags, 0666);
  if (file < 0 || dup2(file, fd) < 0) _exit(120);
  if (file != fd) ::close(file);
}

int openTerminal() {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
    throw std::runtime_error("cannot make a terminal");
  return terminal;
}

void setLimits(const RunOptions& options) {
  if (options.file_size_limit <= 0) return;
  rlimit limit;
  limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(options.file_size_limit);
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(121);
}

}  // namespace

RunningTool::RunningTool(const std::vector<std::string>& arguments, const RunOptions& options,
                         bool terminal) {
  const std::vector<std::string> words = commandLine(arguments);
  std::vector<char*> argv;
  for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  std::string terminal_name;
  if (terminal) {
    _terminal = openTerminal();
    terminal_name = ptsname(_terminal);
  }
  const std::string out = options.out_path.empty() ? _directory.file("out") : options.out_path;
  _pid = fork();
  if (_pid < 0) throw std::runtime_error("cannot start a process");
  if (_pid == 0) {
    for (int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) signal(number, SIG_DFL);
    redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
    redirect(STDOUT_FILENO, out, O_WRONLY | O_CREAT);
    if (terminal)
      redirect(STDERR_FILENO, terminal_name, O_RDWR | O_NOCTTY);
    else
      redirect(STDERR_FILENO, _directory.file("err"), O_WRONLY | O_CREAT);
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) _exit(122);
    setLimits(options);
    execv(argv[0], argv.data());
    _exit(123);
  }
}

RunningTool::~RunningTool() {
  if (!_ended) {
    kill(_pid, SIGKILL);
    waitpid(_pid, nullptr, 0);
  }
  if (_terminal >= 0) ::close(_terminal);
}

void RunningTool::sendSignal(int number) {
  kill(_pid, number);
}

void RunningTool::readTerminal() {
  if (_terminal < 0) return;
  pollfd ready = {_terminal, POLLIN, 0};
  char text[4096];
  while (poll(&ready, 1, 0) == 1 && (ready.revents & POLLIN) != 0) {
    const ssize_t got = ::read(_terminal, text, sizeof text);
    if (got <= 0) return;
    _terminal_text.append(text, static_cast<std::size_t>(got));
  }
}

bool RunningTool::hasEnded() {
  if (!_ended) _ended = waitpid(_pid, &_wait_status, WNOHANG) == _pid;
  return _ended;
}

bool RunningTool::waitUntil(const std::function<bool()>& condition) {
  for (int step = 0; step < 6000; ++step) {
    readTerminal();
    if (condition()) return true;
    if (hasEnded()) return condition();
    usleep(10000);
  }
  return false;
}

ToolRun RunningTool::wait() {
  waitUntil([] { return false; });
  if (!_ended) {
    ADD_FAILURE() << "the program does not end";
    kill(_pid, SIGKILL);
    waitpid(_pid, &_wait_status, 0);
    _ended = true;
  }
  readTerminal();
  ToolRun run;
  run.status = WIFEXITED(_wait_status) ? WEXITSTATUS(_wait_status) : 128 + WTERMSIG(_wait_status);
  if (access(_directory.file("out").c_str(), F_OK) == 0) run.out = readFile(_directory.file("out"));
  run.err = _terminal >= 0 ? _terminal_text : readFile(_directory.file("err"));
  return run;
}

ToolRun runTool(const std::vector<std::string>& arguments, const RunOptions& options) {
  RunningTool tool(arguments, options, false);
  return tool.wait();
}

Pipe::Pipe(const std::string& path) : _path(path) {
  if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("cannot make a pipe");
  signal(SIGPIPE, SIG_IGN);
}

Pipe::~Pipe() {
  close();
}

bool Pipe::open(RunningTool& tool) {
  const bool opened = tool.waitUntil([this] {
    _fd = ::open(_path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    return _fd >= 0;
  });
  return opened && fcntl(_fd, F_SETFL, 0) == 0;
}

std::size_t Pipe::write(const std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t written = ::write(_fd, bytes.data() + done, bytes.size() - done);
    if (written <= 0) break;
    done += static_cast<std::size_t>(written);
  }
  return done;
}

void Pipe::close() {
  if (_fd >= 0) ::close(_fd);
  _fd = -1;
}

std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  DIR* p_folder = opendir(folder.c_str());
  if (p_folder == nullptr) return names;
  while (const dirent* p_entry = readdir(p_folder)) {
    const std::string name = p_entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  closedir(p_folder);
  std::sort(names.begin(), names.end());
  return names;
}

int numberInFile(const std::string& path) {
  return paintedNumber(*imageLoad(path));
}

testing::AssertionResult failedWith(const ToolRun& run, const std::string& status_name, int status_number,
                                    const std::string& part_of_message) {
  const std::string start = "zo-video: " + status_name + " (" + std::to_string(status_number) + "): ";
  const bool one_line = run.err.find('\n') + 1 == run.err.size();
  if (run.status == 1 && run.err.compare(0, start.size(), start) == 0 && one_line &&
      run.err.find(part_of_message, start.size()) != std::string::npos)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << "expected exit status 1 and one line \"" << start << "..."
                                     << part_of_message << "...\"\n     got exit status " << run.status
                                     << " and \"" << run.err << "\"";
}

std::string makeToolClip(const TempDir& directory, const std::string& name, ClipOptions options) {
  return makeClip(directory.file(name), options).path;
}

std::string makeEndlessClip(const TempDir& directory, ClipOptions options) {
  options.muxer_options["live"] = "1";
  return makeToolClip(directory, "live.mkv", options);
}

ClipOptions toolClipOptions(int frames) {
  ClipOptions options;
  options.width = 96;
  options.height = 64;
  options.frames = frames;
  options.gop = 10;
  options.b_frames = 2;
  return options;
}

}  // namespace test
}  // namespace zo
