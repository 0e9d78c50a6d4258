// What columns of several sources that are called the same have in common: a type that can hold the
// cells of all of them, and the cells in that type.
#pragma once

#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <memory>
#include <optional>
#include <string>

namespace MCHost {

// To be read as numbers and texts, or to be saved with all that the sources say.
enum class JoinFor { kReading, kSaving };

bool AreTexts(const arrow::DataType& type);  // or a dictionary of them
// That of a dictionary's values; any other is its own.
std::shared_ptr<arrow::DataType> ValueTypeOf(const std::shared_ptr<arrow::DataType>& type);
// What a column of the type holds: "numbers", "texts", ...
std::string WhatIsIn(const arrow::DataType& type);

// A type that both can become, null where there is none. Whole numbers and decimals stay exact as
// long as a type of Arrow holds both; dates and times take the finer unit, but none below
// microseconds to be read, since few years have nanoseconds. Saved, all become texts beside texts.
std::shared_ptr<arrow::DataType> CommonType(const std::shared_ptr<arrow::DataType>& a,
                                            const std::shared_ptr<arrow::DataType>& b, JoinFor use);

// The cells in a type that theirs has become. Fails for a time that is out of the unit's range.
arrow::Result<std::shared_ptr<arrow::Array>> CellsAs(const std::shared_ptr<arrow::Array>& cells,
                                                     const std::shared_ptr<arrow::DataType>& type);

// The value of a text in a type; nothing where it is not one of it.
std::optional<std::shared_ptr<arrow::Scalar>> TextAs(const std::string& text,
                                                     const std::shared_ptr<arrow::DataType>& type);

// The type that takes the value of a text besides: wider, where it is a number too large for one of
// numbers or a fraction; else as it was.
std::shared_ptr<arrow::DataType> TypeWithText(const std::shared_ptr<arrow::DataType>& type,
                                              const std::string& text);

}  // namespace MCHost
