// How Arrow arrays become columns, and that a table in memory and a streamed one are the same.
#include <arrow/api.h>
#include <arrow/util/decimal.h>
#include <arrow/util/float16.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/BatchSource.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using ArrayPtr = std::shared_ptr<arrow::Array>;
using Texts = std::vector<std::string>;
using testing::ElementsAre;
using testing::HasSubstr;

template <class Builder, class... Values>
ArrayPtr Build(std::shared_ptr<arrow::DataType> type, Values... values) {
  Builder builder(type, arrow::default_memory_pool());
  EXPECT_TRUE(builder.AppendNull().ok());
  const bool ok = (builder.Append(values).ok() && ...);
  EXPECT_TRUE(ok);
  return builder.Finish().ValueOrDie();
}

ArrayPtr Dictionary(const ArrayPtr& indices, const ArrayPtr& values) {
  return arrow::DictionaryArray::FromArrays(arrow::dictionary(indices->type(), values->type()),
                                            indices, values)
      .ValueOrDie();
}

ArrayPtr Strings(const std::vector<std::string>& texts) {
  arrow::StringBuilder builder;
  EXPECT_TRUE(builder.AppendValues(texts).ok());
  return builder.Finish().ValueOrDie();
}

struct TypeCase {
  const char* fAbout;
  ArrayPtr fArray;
  Texts fCells;
  const char* fNote = "";
};

std::vector<TypeCase> TypeCases() {
  using namespace arrow;
  const double infinity = std::numeric_limits<double>::infinity();
  const auto micro = TimeUnit::MICRO;
  const ArrayPtr colours = Strings({"unused", "red", "blue"});
  return {
      {"null", MakeArrayOfNull(null(), 2).ValueOrDie(), {".", "."}},
      {"bool", Build<BooleanBuilder>(boolean(), true, false), {".", "1", "0"}},
      {"int8", Build<Int8Builder>(int8(), -128, 127), {".", "-128", "127"}},
      {"uint16", Build<UInt16Builder>(uint16(), 65535), {".", "65535"}},
      {"int64",
       Build<Int64Builder>(int64(), (1LL << 53) + 1),
       {".", "9007199254740992"},
       "holds whole numbers beyond 2^53, whose last digits are lost"},
      {"uint64",
       Build<UInt64Builder>(uint64(), ~0ULL),
       {".", "1.8446744073709552e+19"},
       "holds whole numbers beyond 2^53, whose last digits are lost"},
      {"half",
       Build<HalfFloatBuilder>(float16(), util::Float16(1.5).bits(), util::Float16(-6e-8).bits(),
                               util::Float16(65504.0).bits(), std::uint16_t{0x7C00}),
       {".", "1.5", "-5.9604644775390625e-08", "65504", "."}},
      {"float", Build<FloatBuilder>(float32(), 0.1f), {".", "0.10000000149011612"}},
      {"double",
       Build<DoubleBuilder>(float64(), 0.1, infinity, -infinity, std::nan("")),
       {".", "0.10000000000000001", ".", ".", "."}},
      {"decimal128",
       Build<Decimal128Builder>(decimal128(20, 2), Decimal128("-123456789012345678.25"),
                                Decimal128("0.07")),
       {".", "-1.2345678901234568e+17", "0.070000000000000007"}},
      {"decimal256",
       Build<Decimal256Builder>(decimal256(50, 1), Decimal256("-1.5"),
                                Decimal256("100000000000000000000000000000000000000000")),
       {".", "-1.5", "1e+40"}},
      // As near to what they say as a double is, whatever the scale.
      {"decimal128 of many places",
       Build<Decimal128Builder>(decimal128(38, 25), Decimal128("25000000000000000000000000"),
                                Decimal128("-99999999999999999999999999999999999999")),
       {".", "2.5", "-10000000000000"}},
      {"decimal256 of many places",
       Build<Decimal256Builder>(
           decimal256(76, 38), Decimal256("70000000000000000000000000000000000000"),
           Decimal256("-578960446186580977117854925043439539266349923328202820197287920039565648")),
       {".", "0.69999999999999996", "-5.7896044618658102e+33"}},
      {"decimal64 of 18 digits",
       Build<Decimal64Builder>(decimal64(18, 9), Decimal64(644461693100611747)),
       {".", "644461693.10061181"}},
      {"decimal128 of whole numbers",
       Build<Decimal128Builder>(decimal128(38, 0), Decimal128("-9007199254740993")),
       {".", "-9007199254740992"},
       "holds whole numbers beyond 2^53, whose last digits are lost"},
      {"decimal64", Build<Decimal64Builder>(decimal64(10, 3), Decimal64(-1234)), {".", "-1.234"}},
      {"date32",
       Build<Date32Builder>(date32(), -1),
       {".", "-1"},
       "holds dates, read as days since 1970-01-01"},
      {"date64",
       Build<Date64Builder>(date64(), 86400000LL * 3),
       {".", "3"},
       "holds dates, read as days since 1970-01-01"},
      {"timestamp",
       Build<TimestampBuilder>(timestamp(micro, "UTC"), 1500000LL),
       {".", "1.5"},
       "holds dates with times, read as seconds since 1970-01-01 00:00"},
      {"time32",
       Build<Time32Builder>(time32(TimeUnit::MILLI), 250),
       {".", "0.25"},
       "holds times, read as seconds"},
      {"time64",
       Build<Time64Builder>(time64(TimeUnit::NANO), 2000000000LL),
       {".", "2"},
       "holds times, read as seconds"},
      {"duration",
       Build<DurationBuilder>(duration(TimeUnit::SECOND), -7),
       {".", "-7"},
       "holds times, read as seconds"},
      {"utf8", Build<StringBuilder>(utf8(), "b", "", "b", "a"), {".", "0:b", "1:", "0:b", "2:a"}},
      {"large utf8", Build<LargeStringBuilder>(large_utf8(), "b", "é"), {".", "0:b", "1:é"}},
      {"string view",
       Build<StringViewBuilder>(utf8_view(), "short", "longer than twelve bytes"),
       {".", "0:short", "1:longer than twelve bytes"}},
      {"dictionary",
       Dictionary(Build<Int8Builder>(int8(), 2, 1, 2), colours),
       {".", "0:blue", "1:red", "0:blue"}},
      {"dictionary by uint64",
       Dictionary(Build<UInt64Builder>(uint64(), 1), colours),
       {".", "0:red"}},
      {"dictionary with a null",
       Dictionary(Build<Int32Builder>(int32(), 0, 1), Build<StringBuilder>(utf8(), "x")),
       {".", ".", "0:x"}},
      {"dictionary of numbers",
       Dictionary(Build<Int32Builder>(int32(), 1), Build<DoubleBuilder>(float64(), 2.5)),
       {".", "2.5"}},
  };
}

TEST(ArrowTypes, BecomeNumbersAndCodesInMemoryAndStreamedAlike) {
  for (const TypeCase& one : TypeCases()) {
    SCOPED_TRACE(one.fAbout);
    const auto source = [&](ArrayPtr array, std::int64_t batch) {
      return std::make_unique<BatchSource>(
          std::vector<std::pair<std::string, ArrayPtr>>{{"v", std::move(array)}}, batch);
    };
    MemoryTable memory(*source(one.fArray, 100));
    EXPECT_EQ(Cells(memory, 0), one.fCells);
    EXPECT_EQ(memory.Notes(),
              *one.fNote == '\0' ? Texts{} : Texts{"Column \"v\" " + std::string(one.fNote) + "."});
    StreamedTable streamed(source(one.fArray, 2));
    EXPECT_EQ(Contents(streamed), Contents(memory));
    EXPECT_EQ(streamed.Notes(), memory.Notes());
    MemoryTable sliced(*source(one.fArray->Slice(1), 1));
    EXPECT_EQ(Cells(sliced, 0), Texts(one.fCells.begin() + 1, one.fCells.end()));
  }
}

TEST(ArrowTypes, AreTheSameReadInGroupsOfColumns) {
  arrow::DoubleBuilder numbers;
  arrow::StringBuilder texts;
  for (int i = 0; i < 10000; ++i) {
    ASSERT_TRUE((i % 9 == 0 ? numbers.AppendNull() : numbers.Append(i / 7.0)).ok());
    ASSERT_TRUE((i % 8 == 0 ? texts.AppendNull() : texts.Append(std::to_string(i % 77))).ok());
  }
  const ArrayPtr number = numbers.Finish().ValueOrDie();
  const ArrayPtr text = texts.Finish().ValueOrDie();
  const auto source = [&](int columnsAtATime) {
    return std::make_unique<BatchSource>(
        std::vector<std::pair<std::string, ArrayPtr>>{
            {"a", number}, {"b", text}, {"c", text}, {"d", number}, {"e", text}},
        777, columnsAtATime);
  };
  MemoryTable whole(*source(5));
  const auto contents = Contents(whole);
  for (const int columns : {1, 2, 4}) {
    MemoryTable memory(*source(columns));
    EXPECT_EQ(Contents(memory), contents) << columns;
    StreamedTable streamed(source(columns));
    const int added = streamed.AddVariable(KOVA_Variable("new", 0));
    EXPECT_EQ(streamed.Scan({4, added})->Next()->fColumns[1].fpNumbers[0], KOVA_SystemMissing);
    EXPECT_EQ(Cells(streamed, 4), contents[5]) << columns;
    EXPECT_EQ(Cells(streamed, 0), contents[1]) << columns;
  }
}

TEST(ArrowTypes, OthersAreRefusedByName) {
  using namespace arrow;
  const std::pair<std::shared_ptr<DataType>, const char*> refused[] = {
      {list(int32()), "list"},
      {large_list(utf8()), "list"},
      {struct_({field("a", int8())}), "struct"},
      {map(utf8(), int8()), "map"},
      {binary(), "binary"},
      {fixed_size_binary(4), "binary"},
      {dictionary(int8(), binary()), "binary"},
      {month_interval(), "interval"},
      {fixed_size_list(int8(), 2), "list"}};
  for (const auto& [type, name] : refused) {
    BatchSource source({{"bad one", MakeArrayOfNull(type, 1).ValueOrDie()}}, 1);
    try {
      MemoryTable table(source);
      ADD_FAILURE() << name;
    } catch (const HostIOError& error) {
      EXPECT_EQ(error.Place(), "column \"bad one\"");
      EXPECT_EQ(error.Reason(), std::string("columns of type ") + name + " cannot be used");
    }
  }
}

TEST(ArrowTypes, FormatsThatSayNoUnitOrScaleAreRefused) {
  for (const char* format : {"ts", "tsX:", "ttx", "tD", "d:", "d:9", "d:9,999999", "d:9,2,7"}) {
    ArrowSchema schema{};
    schema.name = "v";
    schema.format = format;
    EXPECT_THROW(ArrowColumn(schema, "data"), HostIOError) << format;
  }
}

// A batch that says that it has its children, with these in their place.
void TakeChildren(ArrowArray& batch, ArrowArray** others) {
  batch.release(&batch);
  batch.children = others;
  batch.release = [](ArrowArray* array) { array->release = nullptr; };
}

TEST(ArrowTypes, BrokenArraysAreRefused) {
  using Breaker = std::function<void(ArrowArray&)>;
  const ArrayPtr words = Strings({"ab", "c"});
  const ArrayPtr views = Build<arrow::StringViewBuilder>(arrow::utf8_view(),
                                                         "longer than twelve bytes", "another one");
  static constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max();
  static ArrowArray* kNoChild[] = {nullptr};
  const ArrayPtr codes = Dictionary(Build<arrow::Int8Builder>(arrow::int8(), 1), words);
  static const std::int32_t kBackwards[] = {2, 0, 5};
  static const std::int32_t kBeyond[] = {0, 1 << 30, 3};
  static const char kNotUtf8[] = "\xFF\xFE!";
  static const std::int8_t kOutside[] = {0, 9};
  static const std::int64_t kShort[] = {20};
  const std::pair<ArrayPtr, Breaker> broken[] = {
      {words, [](ArrowArray& a) { a.children[0]->length = 1; }},
      {words, [](ArrowArray& a) { a.children[0]->n_buffers = 2; }},
      {words, [](ArrowArray& a) { a.children[0]->null_count = 1; }},
      {words, [](ArrowArray& a) { a.children[0]->buffers[1] = nullptr; }},
      {words, [](ArrowArray& a) { a.children[0]->buffers[1] = kBackwards; }},
      {words, [](ArrowArray& a) { a.children[0]->buffers[1] = kBeyond; }},
      {words, [](ArrowArray& a) { a.children[0]->buffers[2] = nullptr; }},
      {words, [](ArrowArray& a) { a.children[0]->buffers[2] = kNotUtf8; }},
      {words, [](ArrowArray& a) { a.length = -1; }},
      {words, [](ArrowArray& a) { a.offset = 1; }},
      {words, [](ArrowArray& a) { a.offset = kFar; }},
      {words, [](ArrowArray& a) { a.children[0]->offset = kFar; }},
      {words, [](ArrowArray& a) { a.children[0]->buffers = nullptr; }},
      {words, [](ArrowArray& a) { TakeChildren(a, nullptr); }},
      {words, [](ArrowArray& a) { TakeChildren(a, kNoChild); }},
      {views, [](ArrowArray& a) { a.children[0]->buffers[2] = nullptr; }},
      {views, [](ArrowArray& a) { a.children[0]->buffers[3] = kShort; }},
      {codes, [](ArrowArray& a) { a.children[0]->buffers[1] = kOutside; }},
      {codes, [](ArrowArray& a) { a.children[0]->dictionary->length = -1; }},
      {codes, [](ArrowArray& a) { std::swap(a.children[0]->dictionary, a.dictionary); }},
  };
  for (std::size_t i = 0; i < std::size(broken); ++i) {
    struct Damaged {
      ArrowArrayStream fInner;
      Breaker fBreak;
    } damaged{{}, broken[i].second};
    BatchSource({{"v", broken[i].first}}, 10).Open(nullptr, &damaged.fInner);
    ArrowArrayStream stream{};
    stream.private_data = &damaged;
    stream.get_schema = [](ArrowArrayStream* s, ArrowSchema* out) {
      auto& inner = static_cast<Damaged*>(s->private_data)->fInner;
      return inner.get_schema(&inner, out);
    };
    // Hands out a copy that is damaged; the array behind it is released as it was.
    stream.get_next = [](ArrowArrayStream* s, ArrowArray* out) {
      auto* self = static_cast<Damaged*>(s->private_data);
      const int code = self->fInner.get_next(&self->fInner, out);
      if (out->release != nullptr) self->fBreak(*out);
      return code;
    };
    stream.release = [](ArrowArrayStream* s) {
      auto& inner = static_cast<Damaged*>(s->private_data)->fInner;
      inner.release(&inner);
      s->release = nullptr;
    };
    EXPECT_THROW(MemoryTable table(&stream), HostIOError) << "damage " << i;
    EXPECT_EQ(stream.release, nullptr);
  }
}

TEST(ArrowTypes, ColumnsNeedNamesOfTheirOwn) {
  const ArrayPtr one = Strings({"x"});
  for (const char* second : {"", "a", "\xFF"}) {
    BatchSource source({{"a", one}, {second, one}}, 1);
    EXPECT_THROW(MemoryTable table(source), HostIOError);
  }
  BatchSource odd({{" a \"b\",\n", one}, {"é", one}}, 1);
  MemoryTable table(odd);
  EXPECT_THAT(MCHost::Dictionary(table), ElementsAre(" a \"b\",\n:1", "é:1"));
}

}  // namespace
}  // namespace MCHost
