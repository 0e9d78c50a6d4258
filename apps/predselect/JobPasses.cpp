#include "apps/predselect/JobPasses.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <numeric>
#include <optional>
#include <system_error>
#include <utility>

#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/arrow/DataParts.h"
#include "host/data/PartsTable.h"
#include "host/data/WholeTable.h"
#include "host/session/HostIOError.h"
#include "operations/MergePieces.h"
#include "operations/PartPasses.h"

extern char** environ;

namespace PredSelectApp {

namespace {

constexpr const char* kItself = "/proc/self/exe";

std::uintmax_t SizeOf(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

// Where it is not, whoever opens it says what is wrong.
bool IsThere(const std::string& path) {
  std::error_code error;
  return path == "-" ||
         (std::filesystem::exists(path, error) && !std::filesystem::is_directory(path, error));
}

// Largest parts first, each to whoever has least to do.
std::vector<std::vector<std::size_t>> ShareOut(const std::vector<std::string>& parts,
                                               std::size_t jobs) {
  std::vector<std::pair<std::uintmax_t, std::size_t>> sizes;
  for (std::size_t i = 0; i < parts.size(); ++i) sizes.emplace_back(SizeOf(parts[i]), i);
  std::sort(sizes.begin(), sizes.end(), [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second < b.second;
  });
  std::vector<std::vector<std::size_t>> shares(jobs);
  std::vector<std::uintmax_t> loads(jobs, 0);
  for (const auto& [size, part] : sizes) {
    const auto least = std::min_element(loads.begin(), loads.end());
    *least += size + 1;
    shares[static_cast<std::size_t>(least - loads.begin())].push_back(part);
  }
  for (auto& share : shares) std::sort(share.begin(), share.end());
  return shares;
}

[[noreturn]] void ThrowFailure(const std::vector<std::string>& texts) {
  if (texts.size() == 4) throw MCHost::HostIOError(texts[1], texts[2], texts[3]);
  throw UsageError(texts.size() > 1 ? texts[1] : "a process of --jobs failed.");
}

[[noreturn]] void ThrowOfSystem(int error = errno) {
  throw MCHost::HostIOError("--jobs", "", std::strerror(error));
}

std::string HowEnded(int status) {
  return WIFSIGNALED(status) ? "was ended by signal " + std::to_string(WTERMSIG(status))
                             : "ended with exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

JobPasses::JobPasses(const std::vector<std::string>& arguments,
                     const std::vector<std::string>& parts, std::size_t jobs)
    : fParts(parts) {
  for (std::vector<std::size_t>& share : ShareOut(parts, jobs)) {
    fJobs.emplace_back().fParts = std::move(share);
  }
  try {
    for (Job& job : fJobs) Start(job, arguments);
  } catch (...) {
    EndAll();
    throw;
  }
}

JobPasses::~JobPasses() { EndAll(); }

void JobPasses::EndAll() const {
  for (const Job& job : fJobs) End(job);
}

void JobPasses::Start(Job& job, const std::vector<std::string>& arguments) {
  std::vector<char*> words;
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  int in[2], out[2];
  if (pipe2(in, O_CLOEXEC) != 0) ThrowOfSystem();
  job.fToIt = in[1];
  if (pipe2(out, O_CLOEXEC) != 0) {
    close(in[0]);
    ThrowOfSystem();
  }
  job.fFromIt = out[0];
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  // A group of its own, so that the keyboard's signals come here alone.
  posix_spawnattr_t attributes;
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  const int failure =
      posix_spawn(&job.fProcess, kItself, &actions, &attributes, words.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  if (failure == 0) return;
  job.fProcess = -1;
  ThrowOfSystem(failure);
}

void JobPasses::End(const Job& job) {
  if (job.fToIt >= 0) close(job.fToIt);
  if (job.fFromIt >= 0) close(job.fFromIt);
  if (job.fProcess <= 0) return;
  // It has no file of its own, and nothing to say: not even that it was ended while it started.
  kill(job.fProcess, SIGKILL);
  while (waitpid(job.fProcess, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::string JobPasses::NameOf(const Job& job) const {
  constexpr std::size_t kMostNamed = 4;
  std::string names;
  for (std::size_t i = 0; i < std::min(job.fParts.size(), kMostNamed); ++i) {
    names += (i == 0 ? "" : ", ") + fParts[job.fParts[i]];
  }
  const std::size_t more = job.fParts.size() - std::min(job.fParts.size(), kMostNamed);
  return more == 0 ? names : names + " and " + std::to_string(more) + " more";
}

JobFrame JobPasses::AnswerOf(Job& job) {
  std::optional<JobFrame> answer = ReadFrame(job.fFromIt);
  if (answer) return std::move(*answer);
  int status = 0;
  while (waitpid(job.fProcess, &status, 0) < 0 && errno == EINTR) {
  }
  job.fProcess = -1;
  throw MCHost::HostIOError(NameOf(job), "",
                            "the process of --jobs that reads this " + HowEnded(status));
}

std::vector<std::string> JobPasses::AskAll(const std::vector<JobFrame>& asked) {
  for (std::size_t i = 0; i < fJobs.size(); ++i) {
    // One that has gone says why when it is asked for its answer.
    (void)!WriteFrame(fJobs[i].fToIt, asked[std::min(i, asked.size() - 1)]);
  }
  // Whoever has something to say first, so that nobody waits for the others of one that has gone.
  std::vector<JobFrame> frames(fJobs.size());
  std::vector<pollfd> waited;
  for (const Job& job : fJobs) waited.push_back({job.fFromIt, POLLIN, 0});
  for (std::size_t left = fJobs.size(); left > 0;) {
    if (poll(waited.data(), waited.size(), -1) < 0) {
      if (errno != EINTR) ThrowOfSystem();
      continue;
    }
    for (std::size_t i = 0; i < fJobs.size(); ++i) {
      if (waited[i].fd < 0 || waited[i].revents == 0) continue;
      frames[i] = AnswerOf(fJobs[i]);
      waited[i].fd = -1;
      --left;
    }
  }
  // The first failure in their order, so that it is the same each time.
  std::vector<std::string> answers;
  for (JobFrame& frame : frames) {
    if (frame.fKind == JobFrame::kFailed) ThrowFailure(UnpackTexts(frame.fBytes));
    answers.push_back(std::move(frame.fBytes));
  }
  return answers;
}

std::string JobPasses::Merged(const std::vector<std::string>& pieces) const {
  std::vector<PredSelect::NamedPiece> named;
  for (std::size_t i = 0; i < pieces.size(); ++i) named.push_back({pieces[i], NameOf(fJobs[i])});
  return PredSelect::MergePieces(named);
}

std::string JobPasses::Open(std::vector<std::string>& notes) {
  std::vector<JobFrame> frames;
  for (const Job& job : fJobs) {
    std::vector<std::string> words;
    for (const std::size_t part : job.fParts) {
      words.push_back(std::to_string(part));
      words.push_back(fParts[part]);
    }
    frames.push_back({JobFrame::kOpen, PackTexts(words)});
  }
  const std::vector<std::string> answers = AskAll(frames);
  std::vector<std::string> pieces;
  std::vector<std::pair<std::string, std::vector<std::string>>> ofSources;
  for (const std::string& part : fParts) ofSources.emplace_back(part, std::vector<std::string>());
  std::vector<std::vector<std::string>> ofColumns(fParts.size());
  for (std::size_t j = 0; j < fJobs.size(); ++j) {
    const std::vector<std::string> texts = UnpackTexts(answers[j]);
    pieces.push_back(texts.at(0));
    for (std::size_t i = 0; i < fJobs[j].fParts.size(); ++i) {
      ofSources[fJobs[j].fParts[i]].second = UnpackTexts(texts.at(2 * i + 1));
      ofColumns[fJobs[j].fParts[i]] = UnpackTexts(texts.at(2 * i + 2));
    }
  }
  notes = MCHost::JoinNotes(ofSources);
  for (const std::vector<std::string>& own : ofColumns) {
    for (const std::string& note : own) {
      if (std::ranges::count(notes, note) == 0) notes.push_back(note);
    }
  }
  return Merged(pieces);
}

void JobPasses::Use(const std::string& ranges) { (void)AskAll({{JobFrame::kUse, ranges}}); }

std::string JobPasses::Pass(MCHost::PassOver over, const std::string& request) {
  return Merged(AskAll({{JobFrame::kPass, std::string(1, static_cast<char>(over)) + request}}));
}

std::unique_ptr<MCHost::DataTable> OpenJobs(const Options& options, ProgressLine& progress) {
  const std::vector<std::string> parts = MCHost::FilesOfData(options.fData.fFile);
  if (parts.size() < 2) {
    if (!parts.empty() && !IsThere(parts.front())) return OpenTable(options.fData, progress);
    throw UsageError(
        "--jobs: the data are one file, and each process takes whole files; --threads "
        "uses several processors on one.");
  }
  std::vector<std::string> arguments = options.fWords;
  const std::size_t jobs = std::min(static_cast<std::size_t>(options.fJobs), parts.size());
  arguments.insert(arguments.end(), {"--serve-parts", std::to_string(jobs)});
  progress.Show("Reading " + options.fData.fFile + " in " + std::to_string(jobs) + " processes");
  const auto passes = std::make_shared<JobPasses>(arguments, parts, jobs);
  std::vector<std::string> notes;
  const std::string ranges = passes->Open(notes);
  passes->Use(ranges);
  const std::shared_ptr<MCHost::WholeTable> whole = PredSelect::WholeOf(ranges, -1);
  whole->fName = options.fData.fFile;
  whole->fpPasses = passes;
  progress.Clear();
  return std::make_unique<MCHost::PartsTable>(whole, std::move(notes));
}

}  // namespace PredSelectApp
