// What a column of text is declared to hold.
#pragma once

namespace MCHost {

enum class FieldType { kAny, kString, kNumber, kInteger, kBoolean, kDate, kDateTime, kTime };

}  // namespace MCHost
