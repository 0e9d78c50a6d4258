// The model as a source file in C99. It multiplies the same doubles in the same order as the
// component does, so the results are the same bits wherever the compiler keeps to IEEE doubles.
#include <cctype>
#include <cstdio>
#include <functional>
#include <set>
#include <string_view>

#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/ModelFormats.h"
#include "modelfiles/export/ScoringModel.h"

namespace MCModelFiles {

namespace {

// Words that cannot name a member, and macros that compilers and the headers bring.
const std::set<std::string> kTaken = {"auto",         "break",         "case",     "char",
                                      "const",        "continue",      "default",  "do",
                                      "double",       "else",          "enum",     "extern",
                                      "float",        "for",           "goto",     "if",
                                      "inline",       "int",           "long",     "register",
                                      "restrict",     "return",        "short",    "signed",
                                      "sizeof",       "static",        "struct",   "switch",
                                      "typedef",      "union",         "unsigned", "void",
                                      "volatile",     "while",         "asm",      "typeof",
                                      "alignas",      "alignof",       "bool",     "constexpr",
                                      "false",        "true",          "nullptr",  "static_assert",
                                      "thread_local", "typeof_unqual", "NULL",     "offsetof",
                                      "linux",        "unix",          "i386",     "errno",
                                      "assert"};

constexpr const char* kScale = R"(
static void multiply(double *p, int *scaled, const double *factors) {
  int k;
  for (k = 0; k < CLASSES; ++k) {
    p[k] *= factors[k];
    while (p[k] < 0x1p-200 && p[k] > 0) {
      p[k] *= 0x1p200;
      ++scaled[k];
    }
  }
}

static void normalise(double *p, int *scaled) {
  int k, least = -1;
  double sum = 0;
  for (k = 0; k < CLASSES; ++k) {
    if (p[k] > 0 && (least < 0 || scaled[k] < least)) least = scaled[k];
  }
  for (k = 0; k < CLASSES; ++k) {
    for (; scaled[k] > least; --scaled[k]) p[k] *= 0x1p-200;
    sum += p[k];
  }
  for (k = 0; k < CLASSES; ++k) p[k] = sum > 0 ? p[k] / sum : 0;
}

/* Ties go to the class with the larger training weight; but where the first class is among them,
   the next one of them is passed over. */
static int winner_of(const double *p) {
  int i, first = 0, winner, passed = 0;
  for (i = 1; i < CLASSES; ++i) {
    if (p[i] > p[first]) first = i;
  }
  winner = first;
  for (i = first > 1 ? first : 1; i < CLASSES; ++i) {
    if (p[i] < p[first]) continue;
    if (passed && weights[i] > weights[winner]) winner = i;
    passed = 1;
  }
  return winner;
}
)";

// The logarithm of a product, however small; taken before products are brought to one scale.
constexpr const char* kTemperature = R"(
static double log_of(double p, int scaled) {
  int e = 0;
  const double f = frexp(p, &e);
  return log(f) + 0x1.62e42fefa39efp-1 * (e - 200 * scaled);
}

static void calibrate(double *p, const double *logs) {
  int k;
  double largest = logs[0], sum = 0;
  for (k = 1; k < CLASSES; ++k) {
    if (logs[k] > largest) largest = logs[k];
  }
  for (k = 0; k < CLASSES; ++k) {
    p[k] = exp((logs[k] - largest) / TEMPERATURE);
    sum += p[k];
  }
  for (k = 0; k < CLASSES; ++k) p[k] /= sum;
}
)";

constexpr const char* kIsotonic = R"(
static double curve_at(double v, double rest, const double *x, const double *y, int n) {
  int i = 0;
  double beyond;
  if (v <= 0.5) rest = 1 - v;
  while (i < n && (x[i] > 0.5 ? rest <= 1 - x[i] : v >= x[i])) ++i;
  if (i == 0) return y[0];
  if (i == n) return y[n - 1];
  beyond = x[i - 1] > 0.5 ? (1 - x[i - 1]) - rest : v - x[i - 1];
  return y[i - 1] + (y[i] - y[i - 1]) * (beyond / (x[i] - x[i - 1]));
}
)";

constexpr const char* kBinOf = R"(
static int bin_of(double v, const double *cuts, int n) {
  int low = 0;
  if (!(v > -1.7976931348623157e308 && v <= 1.7976931348623157e308)) return -1;
  while (low < n) {
    const int middle = low + (n - low) / 2;
    if (cuts[middle] < v) low = middle + 1;
    else n = middle;
  }
  return low;
}
)";

constexpr const char* kNumberOf = R"(
static int number_of(double v, const double *values, int n) {
  int i;
  for (i = 0; i < n; ++i) {
    if (values[i] == v) return i;
  }
  return -1;
}
)";

constexpr const char* kTextOf = R"(
static int text_of(const char *v, const char *const *values, int n) {
  int i;
  for (i = 0; v != NULL && i < n; ++i) {
    if (strcmp(values[i], v) == 0) return i;
  }
  return -1;
}
)";

// In ASCII, so that neither the encoding of the source nor what is in the text means anything.
std::string Escaped(const std::string& text, const char* plain) {
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = (byte < 0x80 && std::isalnum(byte) != 0) ||
                         std::string_view(plain).find(c) != std::string_view::npos;
    char code[8];
    std::snprintf(code, sizeof code, "\\%03o", static_cast<unsigned>(byte));
    escaped += isPlain ? std::string(1, c) : code;
  }
  return escaped;
}

std::string Literal(const std::string& text) {
  return '"' + Escaped(text, " !#$%&'()*+,-./:;<=>@[]^_`{|}~") + '"';
}

std::string Comment(const std::string& text) { return "/* " + Escaped(text, " _-.,()%") + " */"; }

std::string MemberName(const std::string& name, std::set<std::string>& taken) {
  constexpr std::size_t kMost = 60;
  const std::string plain = PlainName(name).substr(0, kMost);
  return Untaken(plain[0] == '_' ? "x" + plain : plain, taken);
}

std::string Braced(std::size_t n, const std::function<std::string(std::size_t)>& item) {
  constexpr std::size_t kInOneLine = 4;
  std::string list = "{";
  for (std::size_t i = 0; i < n; ++i) {
    list += i == 0 ? "" : i % kInOneLine == 0 ? ",\n  " : ", ";
    list += item(i);
  }
  return list + "}";
}

std::string Numbers(const double* numbers, std::size_t n) {
  return Braced(n, [numbers](std::size_t i) { return RealDigits(numbers[i]); });
}

std::string Values(const ScoringVariable& variable) {
  if (!variable.fbTexts) return Numbers(variable.fNumbers.data(), variable.fNumbers.size());
  return Braced(variable.fTexts.size(),
                [&variable](std::size_t i) { return Literal(variable.fTexts[i]); });
}

std::string Array(const char* type, const std::string& name, std::size_t n,
                  const std::string& values) {
  return type + name + "[" + std::to_string(n) + "] = " + values + ";\n";
}

const char* TypeOf(const ScoringVariable& variable) {
  return variable.fbTexts ? "const char *" : "double ";
}

std::string Tables(const ScoringModel& model, const ScoringInput& input,
                   const std::string& number) {
  std::string text = "\n" + Comment(input.fName) + "\n";
  if (input.fbBinned && !input.fCuts.empty()) {
    text += Array("static const double ", "cuts_" + number, input.fCuts.size(),
                  Numbers(input.fCuts.data(), input.fCuts.size()));
  } else if (!input.fbBinned) {
    text += Array(input.fbTexts ? "static const char *const " : "static const double ",
                  "values_" + number, input.GetNCategories(), Values(input));
  }
  text += "static const double factors_" + number + "[" + std::to_string(input.GetNRows()) +
          "][CLASSES] = {";
  for (std::size_t row = 0; row < input.GetNRows(); ++row) {
    text += (row == 0 ? "\n  " : ",\n  ") +
            Numbers(&input.fFactors[row * model.GetNClasses()], model.GetNClasses());
  }
  return text + "};\n";
}

// The row of the predictor's table.
std::string RowOf(const ScoringInput& input, const std::string& member, const std::string& number) {
  const std::string v = "x->" + member;
  if (!input.fbBinned) {
    return (input.fbTexts ? "text_of(" : "number_of(") + v + ", values_" + number + ", " +
           std::to_string(input.GetNCategories()) + ")";
  }
  std::string tests;
  for (const double value : input.fMissing) tests += v + " == " + RealDigits(value) + " || ";
  if (input.fMissingRange) {
    tests += "(" + v + " >= " + RealDigits(input.fMissingRange->first) + " && " + v +
             " <= " + RealDigits(input.fMissingRange->second) + ") || ";
  }
  const std::string bin = "bin_of(" + v + ", " + (input.fCuts.empty() ? "NULL" : "cuts_" + number) +
                          ", " + std::to_string(input.fCuts.size()) + ")";
  return tests.empty() ? bin : tests.substr(0, tests.size() - 4) + " ? -1 : " + bin;
}

std::string Head(const ScoringModel& model, const ExportOptions& options) {
  const bool isWarm = model.fCalibration.GetMethod() == NBCalibration::kTemperature;
  std::string head =
      "/* Made by PredSelect " + options.fVersion +
      ". Scores a case: fill in a predselect_case and call predselect_score.\n"
      "   Numbers that are missing are NAN, texts that are missing NULL. */\n"
      "#include <stddef.h>\n#include <string.h>\n" +
      (isWarm ? "#include <math.h>\n" : "") + "\n#define CLASSES " +
      std::to_string(model.GetNClasses()) + "\n" +
      (isWarm ? "#define TEMPERATURE " + RealDigits(model.fCalibration.GetTemperature()) + "\n"
              : "") +
      "\n/* The values of " + Comment(model.fTarget.fName).substr(3) + "\n";
  const char* type = model.fTarget.fbTexts ? "const char *const " : "const double ";
  head += std::string("extern ") + type + "predselect_classes[CLASSES];\n" + type +
          "predselect_classes[CLASSES] = " + Values(model.fTarget) + ";\n";
  return head;
}

// The functions that calibrate, with their tables.
std::string Calibration(const ScoringModel& model) {
  const NBCalibration& calibration = model.fCalibration;
  if (calibration.GetMethod() == NBCalibration::kNone) return "";
  if (calibration.GetMethod() == NBCalibration::kTemperature) return kTemperature;
  const auto& curves = calibration.GetCurves();
  std::string text = kIsotonic;
  std::string body;
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const std::string n = std::to_string(i + 1);
    const std::size_t size = curves[i].fX.size();
    const std::string k = std::to_string(curves.size() == 1 ? 1 : i);
    text += Array("static const double ", "x_of_" + n, size, Numbers(curves[i].fX.data(), size)) +
            Array("static const double ", "y_of_" + n, size, Numbers(curves[i].fY.data(), size));
    body += "  p[" + k + "] = curve_at(p[" + k + "], unlikely, x_of_" + n + ", y_of_" + n + ", " +
            std::to_string(size) + ");\n";
  }
  body += curves.size() == 1
              ? "  p[0] = 1 - p[1];\n"
              : "  for (k = 0; k < CLASSES; ++k) sum += p[k];\n"
                "  for (k = 0; k < CLASSES; ++k) p[k] = sum > 0 ? p[k] / sum : 1.0 / CLASSES;\n";
  return text + "\nstatic void calibrate(double *p) {\n  int k;\n  double unlikely = 0" +
         (curves.size() == 1 ? "" : ", sum = 0") +
         ";\n  for (k = 0; k < CLASSES; ++k) unlikely += p[k] > 0.5 ? 0 : p[k];\n" + body + "}\n";
}

// How the case's products become its probabilities.
const char* Ending(const ScoringModel& model) {
  switch (model.fCalibration.GetMethod()) {
    case NBCalibration::kTemperature:
      return "  for (k = 0; k < CLASSES; ++k) logs[k] = log_of(p[k], scaled[k]);\n"
             "  normalise(p, scaled);\n  row = winner_of(p);\n  calibrate(p, logs);\n"
             "  return row;\n}\n";
    case NBCalibration::kIsotonic:
      return "  normalise(p, scaled);\n  calibrate(p);\n  return winner_of(p);\n}\n";
    default:
      return "  normalise(p, scaled);\n  return winner_of(p);\n}\n";
  }
}

// What the file's own functions need of the libraries of helpers.
std::string Helpers(const ScoringModel& model) {
  bool isBinned = false;
  bool isNumber = false;
  bool isText = false;
  for (const ScoringInput& input : model.fInputs) {
    isBinned = isBinned || input.fbBinned;
    isText = isText || input.fbTexts;
    isNumber = isNumber || (!input.fbBinned && !input.fbTexts);
  }
  return std::string(kScale) + (isBinned ? kBinOf : "") + (isNumber ? kNumberOf : "") +
         (isText ? kTextOf : "");
}

}  // namespace

ExportedModel ToC(const ScoringModel& model, const ExportOptions& options) {
  const std::size_t classes = model.GetNClasses();
  std::string source = Head(model, options) + "\nstruct predselect_case {\n";
  std::string tables =
      "\nstatic const double weights[CLASSES] = " + Numbers(model.fCounts.data(), classes) +
      ";\nstatic const double priors[CLASSES] = " + Numbers(model.fPriors.data(), classes) + ";\n";
  std::string calls;
  std::set<std::string> taken = kTaken;
  for (std::size_t j = 0; j < model.fInputs.size(); ++j) {
    const ScoringInput& input = model.fInputs[j];
    const std::string number = std::to_string(j + 1);
    const std::string member = MemberName(input.fName, taken);
    source += std::string("  ") + TypeOf(input) + member + ";";
    source += (member == input.fName ? "" : " " + Comment(input.fName)) + "\n";
    tables += Tables(model, input, number);
    calls += "  row = " + RowOf(input, member, number) + ";\n  if (row >= 0) multiply(p, scaled, " +
             "factors_" + number + "[row]);\n";
  }
  source +=
      "};\n\n/* The number of the most likely class, in predselect_classes, and the "
      "probability of each. */\nint predselect_score(const struct predselect_case *x, double "
      "p[CLASSES]);\n" +
      tables + Helpers(model) + Calibration(model) +
      "\nint predselect_score(const struct predselect_case *x, double p[CLASSES]) {\n"
      "  int scaled[CLASSES] = {0};\n  int k, row;\n" +
      (model.fCalibration.GetMethod() == NBCalibration::kTemperature ? "  double logs[CLASSES];\n"
                                                                     : "") +
      "  for (k = 0; k < CLASSES; ++k) p[k] = priors[k];\n" + calls + Ending(model);
  return {source, {}};
}

}  // namespace MCModelFiles
