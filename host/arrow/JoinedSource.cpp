#include "host/arrow/JoinedSource.h"

#include <arrow/array.h>
#include <arrow/array/util.h>
#include <arrow/c/bridge.h>
#include <arrow/compute/cast.h>
#include <arrow/record_batch.h>
#include <arrow/scalar.h>
#include <arrow/type.h>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/MissingValueCode.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

using Type = std::shared_ptr<arrow::DataType>;

// What types have in common that can stand in one column.
enum class Family { kNothing, kNumbers, kTexts, kTimes, kOthers };

Family FamilyOf(const arrow::DataType& type) {
  const arrow::Type::type id = type.id();
  if (id == arrow::Type::DICTIONARY) {
    return FamilyOf(*static_cast<const arrow::DictionaryType&>(type).value_type());
  }
  if (id == arrow::Type::NA) return Family::kNothing;
  if (id == arrow::Type::BOOL || arrow::is_numeric(id) || arrow::is_decimal(id)) {
    return Family::kNumbers;
  }
  if (arrow::is_string(id) || id == arrow::Type::STRING_VIEW) return Family::kTexts;
  if (arrow::is_date(id) || id == arrow::Type::TIMESTAMP) return Family::kTimes;
  return Family::kOthers;
}

const char* NameOf(Family family) {
  switch (family) {
    case Family::kNothing:
      return "nothing";
    case Family::kNumbers:
      return "numbers";
    case Family::kTexts:
      return "texts";
    case Family::kTimes:
      return "dates or times";
    case Family::kOthers:
      return "values of another type";
  }
  return "";
}

// A type that both can become; null where there is none.
Type Common(const Type& a, const Type& b) {
  if (a->Equals(*b)) return a;
  const Family family = FamilyOf(*a);
  const Family other = FamilyOf(*b);
  if (family == Family::kNothing) return b;
  if (other == Family::kNothing) return a;
  if (family != other || family == Family::kOthers) return nullptr;
  if (family == Family::kNumbers) return arrow::float64();
  if (family == Family::kTexts) return arrow::large_utf8();
  return arrow::timestamp(arrow::TimeUnit::MICRO);
}

arrow::Result<std::shared_ptr<arrow::Array>> As(const std::shared_ptr<arrow::Array>& array,
                                                const Type& type) {
  if (array->type()->Equals(*type)) return array;
  if (array->type_id() == arrow::Type::NA) return arrow::MakeArrayOfNull(type, array->length());
  auto options = arrow::compute::CastOptions::Unsafe();
  if (array->type_id() == arrow::Type::DICTIONARY) {
    const auto& words = static_cast<const arrow::DictionaryArray&>(*array);
    ARROW_ASSIGN_OR_RAISE(const auto plain,
                          arrow::compute::Cast(array, words.dictionary()->type(), options));
    return As(plain.make_array(), type);
  }
  ARROW_ASSIGN_OR_RAISE(const auto cast, arrow::compute::Cast(array, type, options));
  return cast.make_array();
}

std::shared_ptr<arrow::RecordBatchReader> Import(ArrowArrayStream& stream,
                                                 const std::string& name) {
  return Value(arrow::ImportRecordBatchReader(&stream), name);
}

}  // namespace

// Part after part, each opened when it is its turn.
class JoinedSource::Batches final : public arrow::RecordBatchReader {
 public:
  Batches(JoinedSource& source, Opening opening, Schema schema)
      : fpSource(&source), fOpening(opening), fpSchema(std::move(schema)) {}

  Schema schema() const override { return fpSchema; }

  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    batch->reset();
    while (fPart < fpSource->fParts.size()) {
      const Part& part = fpSource->fParts[fPart];
      if (fpReader == nullptr) ARROW_RETURN_NOT_OK(OpenPartOf(part));
      std::shared_ptr<arrow::RecordBatch> own;
      const arrow::Status status = fpReader->ReadNext(&own);
      if (!status.ok()) return status.WithMessage(part.fFile.fPath, ": ", status.message());
      if (own != nullptr) return Fit(part, *own).Value(batch);
      fpReader = nullptr;
      ++fPart;
    }
    return arrow::Status::OK();
  }

 private:
  // What reads the stream takes no exceptions.
  arrow::Status OpenPartOf(const Part& part) {
    try {
      ArrowArrayStream stream{};
      (part.fpSource.get()->*fOpening)(nullptr, &stream);
      const std::vector<int> columns = ColumnsOf(*Import(stream, part.fFile.fPath)->schema());
      stream = {};
      (part.fpSource.get()->*fOpening)(&columns, &stream);
      fpReader = Import(stream, part.fFile.fPath);
      return arrow::Status::OK();
    } catch (const HostIOError& error) {
      return arrow::Status::IOError(error.what());
    }
  }

  // Those of a part that are wanted; any one where it has none of them, since its cases count.
  std::vector<int> ColumnsOf(const arrow::Schema& schema) const {
    std::vector<int> columns;
    for (const std::string& name : fpSchema->field_names()) {
      if (const int place = schema.GetFieldIndex(name); place >= 0) columns.push_back(place);
    }
    if (columns.empty()) columns.push_back(0);
    std::sort(columns.begin(), columns.end());
    return columns;
  }

  arrow::Result<std::shared_ptr<arrow::RecordBatch>> Fit(const Part& part,
                                                         const arrow::RecordBatch& own) const {
    arrow::ArrayVector columns;
    for (const auto& field : fpSchema->fields()) {
      auto array = own.GetColumnByName(field->name());
      if (array == nullptr) {
        ARROW_ASSIGN_OR_RAISE(array, KeyCells(part, *field, own.num_rows()));
      }
      ARROW_ASSIGN_OR_RAISE(array, As(array, field->type()));
      columns.push_back(std::move(array));
    }
    return arrow::RecordBatch::Make(fpSchema, own.num_rows(), std::move(columns));
  }

  // The value of a folder's name for all cases, or nothing.
  static arrow::Result<std::shared_ptr<arrow::Array>> KeyCells(const Part& part,
                                                               const arrow::Field& field,
                                                               std::int64_t n) {
    for (const auto& [key, value] : part.fFile.fKeys) {
      if (key != field.name() || !value) continue;
      if (FamilyOf(*field.type()) != Family::kNumbers) {
        return arrow::MakeArrayFromScalar(arrow::StringScalar(*value), n);
      }
      return arrow::MakeArrayFromScalar(arrow::DoubleScalar(CodeAsNumber(*value).value_or(0)), n);
    }
    return arrow::MakeArrayOfNull(field.type(), n);
  }

  JoinedSource* fpSource;
  Opening fOpening;
  Schema fpSchema;
  std::size_t fPart = 0;
  std::shared_ptr<arrow::RecordBatchReader> fpReader;
};

JoinedSource::JoinedSource(std::string name, const std::vector<DataPart>& parts, OpenPart open)
    : fName(std::move(name)), fOpen(std::move(open)) {
  for (const DataPart& part : parts) fParts.push_back({part, fOpen(part, {})});
  Settle();
}

// Finds what the parts have in common, and what not.
void JoinedSource::Settle() {
  fNotes.clear();
  std::vector<Schema> schemas = SchemasOf(&IArrowSource::Open);
  if (ReopenAsTexts(schemas)) schemas = SchemasOf(&IArrowSource::Open);
  (void)Join(schemas);
  TellWhatIsMissing(schemas);
}

std::vector<JoinedSource::Schema> JoinedSource::SchemasOf(Opening opening) const {
  std::vector<Schema> schemas;
  for (const Part& part : fParts) {
    ArrowArrayStream stream{};
    (part.fpSource.get()->*opening)(nullptr, &stream);
    schemas.push_back(Import(stream, part.fFile.fPath)->schema());
  }
  return schemas;
}

// The columns in the order in which they come up, the folders' names behind them.
JoinedSource::Schema JoinedSource::Join(const std::vector<Schema>& schemas) const {
  arrow::FieldVector fields;
  std::vector<std::size_t> firsts;  // the part that each comes from
  const auto find = [&fields](const std::string& name) {
    return std::find_if(fields.begin(), fields.end(),
                        [&name](const auto& field) { return field->name() == name; });
  };
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    for (const auto& field : schemas[i]->fields()) {
      const auto known = find(field->name());
      if (known == fields.end()) {
        fields.push_back(field);
        firsts.push_back(i);
        continue;
      }
      Type common = Common((*known)->type(), field->type());
      if (common == nullptr) {
        const std::size_t first = firsts[static_cast<std::size_t>(known - fields.begin())];
        throw HostIOError(fParts[i].fFile.fPath, "",
                          "column \"" + field->name() + "\" holds " +
                              NameOf(FamilyOf(*field->type())) + ", but " +
                              NameOf(FamilyOf(*(*known)->type())) + " in " +
                              fParts[first].fFile.fPath);
      }
      *known = (*known)->WithType(std::move(common));
    }
  }
  for (const Part& part : fParts) {
    for (const auto& [key, value] : part.fFile.fKeys) {
      if (find(key) == fields.end()) fields.push_back(arrow::field(key, KeyType(key)));
    }
  }
  return arrow::schema(std::move(fields));
}

Type JoinedSource::KeyType(const std::string& key) const {
  for (const Part& part : fParts) {
    for (const auto& [name, value] : part.fFile.fKeys) {
      if (name == key && value && !CodeAsNumber(*value)) return arrow::utf8();
    }
  }
  return arrow::float64();
}

// Columns that are texts in one part and not in another are asked for as texts of the others, too.
bool JoinedSource::ReopenAsTexts(const std::vector<Schema>& schemas) {
  std::map<std::string, std::size_t> texts;  // and a part that has them
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    for (const auto& field : schemas[i]->fields()) {
      if (FamilyOf(*field->type()) == Family::kTexts) texts.emplace(field->name(), i);
    }
  }
  bool isReopened = false;
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    std::set<std::string> wanted;
    for (const auto& field : schemas[i]->fields()) {
      const Family family = FamilyOf(*field->type());
      const auto text = texts.find(field->name());
      if (text == texts.end() || family == Family::kTexts || family == Family::kNothing) continue;
      wanted.insert(field->name());
      fNotes.push_back("Column \"" + field->name() + "\" holds " + NameOf(family) + " in " +
                       fParts[i].fFile.fPath + ", but texts in " +
                       fParts[text->second].fFile.fPath + "; it is read as texts.");
    }
    if (wanted.empty()) continue;
    fParts[i].fpSource = fOpen(fParts[i].fFile, wanted);
    isReopened = true;
  }
  return isReopened;
}

void JoinedSource::TellWhatIsMissing(const std::vector<Schema>& schemas) {
  for (const std::string& name : Join(schemas)->field_names()) {
    std::size_t nMissing = 0;
    std::string first;
    for (std::size_t i = 0; i < schemas.size(); ++i) {
      if (schemas[i]->GetFieldIndex(name) >= 0) continue;
      if (nMissing++ == 0) first = fParts[i].fFile.fPath;
    }
    if (nMissing == 0 || nMissing == schemas.size()) continue;  // a name of folders
    fNotes.push_back("Column \"" + name + "\" is not in " + first +
                     (nMissing > 1 ? " and " + std::to_string(nMissing - 1) + " more" : "") +
                     "; it is missing in the cases from there.");
  }
}

void JoinedSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  OpenAs(&IArrowSource::Open, columns, stream);
}

void JoinedSource::OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
  OpenAs(&IArrowSource::OpenOriginal, columns, stream);
}

void JoinedSource::OpenAs(Opening opening, const std::vector<int>* columns,
                          ArrowArrayStream* stream) {
  const Schema whole = Join(SchemasOf(opening));
  arrow::FieldVector fields;
  for (int i = 0; i < whole->num_fields(); ++i) {
    if (columns != nullptr && !std::binary_search(columns->begin(), columns->end(), i)) continue;
    fields.push_back(whole->field(i));
  }
  auto batches = std::make_shared<Batches>(*this, opening, arrow::schema(std::move(fields)));
  Check(arrow::ExportRecordBatchReader(std::move(batches), stream), fName);
}

std::int64_t JoinedSource::CaseCount() const {
  std::int64_t sum = 0;
  for (const Part& part : fParts) {
    const std::int64_t n = part.fpSource->CaseCount();
    if (n < 0) return -1;
    sum += n;
  }
  return sum;
}

bool JoinedSource::IsReadOnce() const {
  return std::any_of(fParts.begin(), fParts.end(),
                     [](const Part& part) { return part.fpSource->IsReadOnce(); });
}

bool JoinedSource::LookAgain() {
  bool isOther = false;
  for (const Part& part : fParts) isOther |= part.fpSource->LookAgain();
  if (isOther) Settle();
  return isOther;
}

int JoinedSource::ColumnsAtATime() const {
  int least = std::numeric_limits<int>::max();
  for (const Part& part : fParts) least = std::min(least, part.fpSource->ColumnsAtATime());
  return least;
}

std::vector<std::string> JoinedSource::Notes() const {
  std::vector<std::pair<std::string, std::vector<std::string>>> own;
  for (const Part& part : fParts) own.emplace_back(part.fFile.fPath, part.fpSource->Notes());
  std::vector<std::string> notes = fNotes;
  for (std::string& note : JoinNotes(own)) notes.push_back(std::move(note));
  return notes;
}

}  // namespace MCHost
