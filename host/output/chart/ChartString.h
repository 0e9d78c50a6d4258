// A text of a chart, put together from the string table and numbers.
#pragma once

#include <string>
#include <utility>

class ChartString {
 public:
  explicit ChartString(std::string text) : fText(std::move(text)) {}

  ChartString& append(const std::string& text) {
    fText += text;
    return *this;
  }
  // As few digits as tell the number.
  ChartString& appendDouble(double value);
  ChartString& appendInteger(int value) { return append(std::to_string(value)); }

  const std::string& GetText() const { return fText; }

 private:
  std::string fText;
};
