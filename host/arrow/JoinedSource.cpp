#include "host/arrow/JoinedSource.h"

#include <arrow/array.h>
#include <arrow/array/util.h>
#include <arrow/c/bridge.h>
#include <arrow/record_batch.h>
#include <arrow/scalar.h>
#include <arrow/type.h>

#include <algorithm>
#include <limits>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/MissingValueCode.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

using Type = std::shared_ptr<arrow::DataType>;

std::shared_ptr<arrow::RecordBatchReader> Import(ArrowArrayStream& stream,
                                                 const std::string& name) {
  return Value(arrow::ImportRecordBatchReader(&stream), name);
}

void OpenFor(JoinFor use, IArrowSource& source, const std::vector<int>* columns,
             ArrowArrayStream* stream) {
  use == JoinFor::kReading ? source.Open(columns, stream) : source.OpenOriginal(columns, stream);
}

// "part-0", "part-0 and 2 more"
class Files {
 public:
  void Add(const std::string& file) {
    if (fCount++ == 0) fFirst = file;
  }
  std::size_t Count() const { return fCount; }
  std::string Text() const {
    return fCount > 1 ? fFirst + " and " + std::to_string(fCount - 1) + " more" : fFirst;
  }

 private:
  std::size_t fCount = 0;
  std::string fFirst;
};

// As a file by itself is refused.
void CheckNames(const arrow::Schema& schema, const std::string& file) {
  std::unordered_set<std::string> names;
  for (int i = 0; i < schema.num_fields(); ++i) {
    const std::string& name = schema.field(i)->name();
    if (names.insert(name).second) continue;
    throw HostIOError(file, "column " + std::to_string(i + 1),
                      "a column named \"" + name + "\" is there already");
  }
}

// Whether one of two types of times becomes the other one for its nanoseconds, which reach no year
// beyond 2262: files of text may well have both.
bool BecomesNanoseconds(const arrow::DataType& common, const arrow::DataType& a,
                        const arrow::DataType& b) {
  const bool hasNanoseconds =
      common.id() == arrow::Type::TIMESTAMP &&
      static_cast<const arrow::TimestampType&>(common).unit() == arrow::TimeUnit::NANO;
  return hasNanoseconds && !a.Equals(b) && a.id() != arrow::Type::NA && b.id() != arrow::Type::NA;
}

}  // namespace

// Part after part, each opened when it is its turn.
class JoinedSource::Batches final : public arrow::RecordBatchReader {
 public:
  Batches(JoinedSource& source, JoinFor use, Schema schema)
      : fpSource(&source), fUse(use), fpSchema(std::move(schema)) {}

  Schema schema() const override { return fpSchema; }

  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    batch->reset();
    while (fPart < fpSource->fParts.size()) {
      const Part& part = fpSource->fParts[fPart];
      if (fpReader == nullptr) ARROW_RETURN_NOT_OK(OpenPartOf(part));
      std::shared_ptr<arrow::RecordBatch> own;
      arrow::Status status = fpReader->ReadNext(&own);
      if (status.ok() && own != nullptr) status = Fit(part, *own).Value(batch);
      if (!status.ok()) return status.WithMessage(part.fFile.fPath, ": ", status.message());
      if (own != nullptr) return status;
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
      OpenFor(fUse, *part.fpSource, nullptr, &stream);
      const std::vector<int> columns = ColumnsOf(*Import(stream, part.fFile.fPath)->schema());
      stream = {};
      OpenFor(fUse, *part.fpSource, &columns, &stream);
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
      const auto array = own.GetColumnByName(field->name());
      const auto cells =
          array != nullptr ? CellsAs(array, field->type()) : KeyCells(part, *field, own.num_rows());
      if (!cells.ok()) {
        return cells.status().WithMessage(
            "column \"", field->name(), "\": ", cells.status().message(),
            fUse == JoinFor::kSaving ? "; --only-new leaves the column out" : "");
      }
      columns.push_back(*cells);
    }
    return arrow::RecordBatch::Make(fpSchema, own.num_rows(), std::move(columns));
  }

  // The value of a folder's name for all cases, or nothing.
  static arrow::Result<std::shared_ptr<arrow::Array>> KeyCells(const Part& part,
                                                               const arrow::Field& field,
                                                               std::int64_t n) {
    for (const auto& [key, value] : part.fFile.fKeys) {
      if (key != field.name() || !value) continue;
      if (const auto cell = TextAs(*value, field.type())) {
        return arrow::MakeArrayFromScalar(**cell, n);
      }
    }
    return arrow::MakeArrayOfNull(field.type(), n);
  }

  JoinedSource* fpSource;
  JoinFor fUse;
  Schema fpSchema;
  std::size_t fPart = 0;
  std::shared_ptr<arrow::RecordBatchReader> fpReader;
};

JoinedSource::JoinedSource(std::string name, const std::vector<DataPart>& parts, OpenPart open)
    : fName(std::move(name)), fOpen(std::move(open)) {
  for (const DataPart& part : parts) fParts.push_back({part, fOpen(part, {}), {}});
  Settle();
}

// Finds what the parts have in common, and what not.
void JoinedSource::Settle() {
  fNotes.clear();
  std::vector<Schema> schemas = SchemasFor(JoinFor::kReading);
  if (ReopenAsTexts(schemas)) schemas = SchemasFor(JoinFor::kReading);
  TellWhatIsMissing(schemas);
}

std::vector<JoinedSource::Schema> JoinedSource::SchemasFor(JoinFor use) const {
  std::vector<Schema> schemas;
  for (const Part& part : fParts) {
    ArrowArrayStream stream{};
    OpenFor(use, *part.fpSource, nullptr, &stream);
    schemas.push_back(Import(stream, part.fFile.fPath)->schema());
    CheckNames(*schemas.back(), part.fFile.fPath);
  }
  return schemas;
}

// The columns in the order in which they come up, the folders' names behind them.
JoinedSource::Schema JoinedSource::Join(const std::vector<Schema>& schemas, JoinFor use) const {
  arrow::FieldVector fields;
  Places places;
  std::vector<std::size_t> firsts;  // the part that each comes from
  std::vector<std::size_t> counts;  // of the parts that have each
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    for (const auto& field : schemas[i]->fields()) {
      const auto [known, isNew] = places.try_emplace(field->name(), fields.size());
      if (isNew) {
        fields.push_back(field);
        firsts.push_back(i);
        counts.push_back(1);
        continue;
      }
      ++counts[known->second];
      auto& joined = fields[known->second];
      Type common = CommonType(joined->type(), field->type(), use);
      if (common == nullptr) {
        throw HostIOError(fParts[i].fFile.fPath, "",
                          "column \"" + field->name() + "\" holds " + WhatIsIn(*field->type()) +
                              ", but " + WhatIsIn(*joined->type()) + " in " +
                              fParts[firsts[known->second]].fFile.fPath);
      }
      if (BecomesNanoseconds(*common, *joined->type(), *field->type()) && !HasTypes()) {
        common = arrow::large_utf8();
      }
      joined = joined->WithType(std::move(common))
                   ->WithNullable(joined->nullable() || field->nullable());
    }
  }
  for (std::size_t j = 0; j < fields.size(); ++j) {
    if (counts[j] < schemas.size()) fields[j] = fields[j]->WithNullable(true);
  }
  AddKeys(schemas, fields, places);
  return arrow::schema(std::move(fields));
}

// The names of folders, as columns of their own or where files lack the column.
void JoinedSource::AddKeys(const std::vector<Schema>& schemas, arrow::FieldVector& fields,
                           Places& places) const {
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    for (const auto& [key, value] : fParts[i].fFile.fKeys) {
      if (schemas[i]->GetFieldIndex(key) >= 0) continue;
      const auto [known, isNew] = places.try_emplace(key, fields.size());
      if (isNew) fields.push_back(arrow::field(key, arrow::null()));
      auto& field = fields[known->second];
      if (field->type()->id() == arrow::Type::NA) field = field->WithType(KeyType(key));
      if (value) field = field->WithType(TypeWithText(field->type(), *value));
    }
  }
}

Type JoinedSource::KeyType(const std::string& key) const {
  for (const Part& part : fParts) {
    for (const auto& [name, value] : part.fFile.fKeys) {
      if (name == key && value && !CodeAsNumber(*value)) return arrow::utf8();
    }
  }
  return arrow::float64();
}

// The columns that parts have in types that do not go together, with the part that others are
// compared with: one with texts, else the first.
std::map<std::string, std::size_t> JoinedSource::Clashes(const std::vector<Schema>& schemas) {
  struct Known {
    std::size_t fPart;
    Type fpType;
  };
  std::unordered_map<std::string, Known> columns;
  std::map<std::string, std::size_t> clashes;
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    for (const auto& field : schemas[i]->fields()) {
      const Type& type = field->type();
      const auto [column, isNew] = columns.try_emplace(field->name(), Known{i, type});
      if (isNew) continue;
      Known& known = column->second;
      Type common = CommonType(known.fpType, type, JoinFor::kReading);
      const bool isNothing = known.fpType->id() == arrow::Type::NA;
      if (isNothing || (common == nullptr && AreTexts(*type))) known = {i, type};
      if (common == nullptr) {
        clashes[field->name()] = known.fPart;
      } else {
        known.fpType = std::move(common);
      }
    }
  }
  return clashes;
}

// Columns whose types do not go together are asked for as texts of the parts that can do that.
bool JoinedSource::ReopenAsTexts(const std::vector<Schema>& schemas) {
  const std::map<std::string, std::size_t> clashes = Clashes(schemas);
  bool isReopened = false;
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    std::set<std::string>& texts = fParts[i].fTexts;
    const std::size_t nBefore = texts.size();
    for (const auto& field : schemas[i]->fields()) {
      const auto clash = clashes.find(field->name());
      const Type& type = field->type();
      if (clash == clashes.end() || AreTexts(*type) || type->id() == arrow::Type::NA) continue;
      if (!texts.insert(field->name()).second) continue;
      const Type other = schemas[clash->second]->GetFieldByName(field->name())->type();
      if (CommonType(other, type, JoinFor::kReading) != nullptr) continue;
      fTextNotes.push_back("Column \"" + field->name() + "\" holds " + WhatIsIn(*type) + " in " +
                           fParts[i].fFile.fPath + ", but " + WhatIsIn(*other) + " in " +
                           fParts[clash->second].fFile.fPath + "; it is read as texts.");
    }
    if (texts.size() == nBefore) continue;
    fParts[i].fpSource = fOpen(fParts[i].fFile, texts);
    // What its start promises is not true of all of it, as a rule.
    if (fbLookedAgain) fParts[i].fpSource->LookAgain();
    isReopened = true;
  }
  return isReopened;
}

void JoinedSource::TellWhatIsMissing(const std::vector<Schema>& schemas) {
  const Schema joined = Join(schemas, JoinFor::kReading);
  for (const auto& field : joined->fields()) {
    Files lacking;
    Files misfits;
    std::string misfit;  // the name of the first one's folder
    for (std::size_t i = 0; i < schemas.size(); ++i) {
      if (schemas[i]->GetFieldIndex(field->name()) >= 0) continue;
      const DataPart& file = fParts[i].fFile;
      const auto key = std::find_if(file.fKeys.begin(), file.fKeys.end(), [&](const auto& known) {
        return known.first == field->name();
      });
      if (key == file.fKeys.end()) {
        lacking.Add(file.fPath);
      } else if (key->second && !TextAs(*key->second, field->type())) {
        if (misfits.Count() == 0) misfit = key->first + "=" + *key->second;
        misfits.Add(file.fPath);
      }
    }
    const std::string column = "Column \"" + field->name() + "\"";
    const std::string effect = "; it is missing in the cases from there.";
    if (lacking.Count() > 0) fNotes.push_back(column + " is not in " + lacking.Text() + effect);
    if (misfits.Count() > 0) {
      fNotes.push_back(column + " holds " + WhatIsIn(*field->type()) + ", and the folder \"" +
                       misfit + "\" of " + misfits.Text() + " names none" + effect);
    }
  }
}

void JoinedSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  OpenAs(JoinFor::kReading, columns, stream);
}

void JoinedSource::OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
  OpenAs(JoinFor::kSaving, columns, stream);
}

void JoinedSource::OpenAs(JoinFor use, const std::vector<int>* columns, ArrowArrayStream* stream) {
  const Schema whole = Join(SchemasFor(use), use);
  arrow::FieldVector fields;
  for (int i = 0; i < whole->num_fields(); ++i) {
    if (columns != nullptr && !std::binary_search(columns->begin(), columns->end(), i)) continue;
    fields.push_back(whole->field(i));
  }
  auto batches = std::make_shared<Batches>(*this, use, arrow::schema(std::move(fields)));
  Check(arrow::ExportRecordBatchReader(std::move(batches), stream), fName);
}

bool JoinedSource::HasTypes() const {
  return std::all_of(fParts.begin(), fParts.end(),
                     [](const Part& part) { return part.fpSource->HasTypes(); });
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
  fbLookedAgain = true;
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
  std::vector<std::string> notes = fTextNotes;
  notes.insert(notes.end(), fNotes.begin(), fNotes.end());
  for (std::string& note : JoinNotes(own)) notes.push_back(std::move(note));
  return notes;
}

}  // namespace MCHost
