#include "tests/modelfiles/Damage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>

#include "modelfiles/ComponentFile.h"
#include "modelfiles/StateEnvelope.h"

namespace {

using Draw = std::mt19937_64;

std::size_t Below(std::size_t n, Draw& draw) { return n == 0 ? 0 : draw() % n; }

// A range of a few bytes, seldom of many.
std::string_view RangeOf(const std::string& bytes, Draw& draw) {
  const std::size_t from = Below(bytes.size(), draw);
  const std::size_t most = Below(8, draw) == 0 ? bytes.size() : 64;
  return std::string_view(bytes).substr(from, 1 + Below(most, draw));
}

std::size_t PlaceOf(std::string_view range, const std::string& bytes) {
  return static_cast<std::size_t>(range.data() - bytes.data());
}

void SwapRanges(std::string& bytes, Draw& draw) {
  const std::size_t n = 1 + Below(32, draw);
  if (bytes.size() < 2 * n) return;
  const std::size_t first = Below(bytes.size() - 2 * n + 1, draw);
  const std::size_t second = first + n + Below(bytes.size() - first - 2 * n + 1, draw);
  std::swap_ranges(bytes.begin() + static_cast<std::ptrdiff_t>(first),
                   bytes.begin() + static_cast<std::ptrdiff_t>(first + n),
                   bytes.begin() + static_cast<std::ptrdiff_t>(second));
}

// What damages a document least.
void ChangeDigit(std::string& bytes, Draw& draw) {
  const std::size_t at = bytes.find_first_of("0123456789", Below(bytes.size(), draw));
  if (at != bytes.npos) bytes[at] = static_cast<char>('0' + Below(10, draw));
}

void ChangeOnce(std::string& bytes, Draw& draw) {
  const std::string_view range = RangeOf(bytes, draw);
  const std::size_t at = PlaceOf(range, bytes);
  const std::size_t n = range.size();
  switch (Below(10, draw)) {
    case 0:
    case 1:
      bytes[at] = static_cast<char>(bytes[at] ^ (1 << Below(8, draw)));
      break;
    case 2:
      bytes[at] = static_cast<char>(draw());
      break;
    case 3:
      bytes.erase(at, n);
      break;
    case 4:
      bytes.insert(at, std::string(range));
      break;
    case 5:
      bytes.resize(at);
      break;
    case 6:
      SwapRanges(bytes, draw);
      break;
    case 7:
      std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), n, '\0');
      break;
    case 8:
      bytes.insert(at, 1 + Below(8, draw), static_cast<char>(draw()));
      break;
    default:
      ChangeDigit(bytes, draw);
  }
}

std::string Damaged(const std::string& bytes, Draw& draw) {
  std::string damaged = bytes;
  const std::size_t times = Below(4, draw) == 0 ? 1 + Below(4, draw) : 1;
  for (std::size_t i = 0; i < times && !damaged.empty(); ++i) ChangeOnce(damaged, draw);
  return damaged;
}

std::string ContentOf(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

void Store(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

double ProcessorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// What is inside of an envelope.
std::string Unsealed(const std::string& bytes, bool xml) {
  std::istringstream file(bytes);
  std::string content = MCModelFiles::OpenEnvelope(file, xml, "").fContent;
  if (!xml) return content;
  const std::size_t start = content.find("\n<?predselect-state");
  content.erase(start, content.find("?>", start) + 2 - start);
  return content.substr(0, content.rfind("<?predselect-end"));
}

// Whether a component that was read can be saved, and reads as the same.
bool IsUsable(const ComponentFile& file, const std::string& path, bool xml) {
  const std::string trouble = WriteComponentFile(path, {xml}, file);
  ComponentFile again;
  return trouble.empty() && ReadComponentFile(path, again).empty() &&
         DigestOf(again) == DigestOf(file);
}

void Try(const std::string& path, std::uint64_t whole, bool xml, DamageReport& report) {
  ComponentFile file;
  const double before = ProcessorSeconds();
  const std::string trouble = ReadComponentFile(path, file);
  report.fMostSeconds = std::max(report.fMostSeconds, ProcessorSeconds() - before);
  if (!trouble.empty()) return;
  ++(DigestOf(file) == whole ? report.fSame : report.fOther);
  if (!IsUsable(file, path, xml)) ++report.fUnusable;
}

}  // namespace

void DamageReport::operator+=(const DamageReport& other) {
  fTrials += other.fTrials;
  fSame += other.fSame;
  fOther += other.fOther;
  fUnusable += other.fUnusable;
  fMostSeconds = std::max(fMostSeconds, other.fMostSeconds);
}

DamageReport DamageState(const std::string& file, const std::string& path, int trials, Seal seal,
                         std::mt19937_64& draw) {
  DamageReport report;
  ComponentFile whole;
  if (!ReadComponentFile(file, whole).empty()) return report;
  const std::uint64_t digest = DigestOf(whole);
  const bool xml = IsXMLStateName(file);
  const std::string sealed = ContentOf(file);
  const std::string content = seal == Seal::kAnew ? Unsealed(sealed, xml) : sealed;
  for (; report.fTrials < trials; ++report.fTrials) {
    std::string damaged = Damaged(content, draw);
    // What no longer begins as a document cannot be sealed as one.
    if (seal == Seal::kAnew && (!xml || damaged.find("?>") != damaged.npos)) {
      damaged = MCModelFiles::PutIntoEnvelope(damaged, xml, "");
    }
    Store(path, damaged);
    Try(path, digest, xml, report);
  }
  return report;
}
