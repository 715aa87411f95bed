// What the engine throws, with the numbers that users of such databases know.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace scorvane::engine {

enum ErrorNumber : int {
  kInvalidArgument = 5,
  kOverflow = 6,
  kDivisionByZero = 11,
  kTypeMismatch = 13,
  kOutOfStringSpace = 14,
  kInvalidUseOfNull = 94,
  kTableExists = 3010,
  kNoCurrentRecord = 3021,
  kDuplicateKey = 3022,
  kFileNotFound = 3024,
  kDiskFull = 3026,
  kReadOnly = 3027,
  kNoTransaction = 3034,
  kOutOfMemory = 3035,
  kDiskError = 3043,
  kInvalidPath = 3044,
  kFileInUse = 3045,
  kDatabaseDamaged = 3049,
  kCannotOpenFile = 3051,
  kNullInIndex = 3058,
  kQueryStopped = 3059,
  kTooFewParameters = 3061,
  kIsSelectQuery = 3065,
  kNotUpdatable = 3073,
  kSyntaxError = 3075,
  kUnknownTable = 3078,
  kAmbiguousField = 3079,
  kUndefinedFunction = 3085,
  kOrderByConflictsWithDistinct = 3093,
  kCircularAlias = 3103,
  kNotAggregate = 3122,
  kInvalidName = 3125,
  kUnknownInsertField = 3127,
  kFieldTooSmall = 3163,
  kRecordDeleted = 3167,
  kFieldExists = 3191,
  kDataChanged = 3197,
  kRelatedRecordsExist = 3200,
  kRelatedRecordRequired = 3201,
  kDatabaseExists = 3204,
  kInvalidOperation = 3219,
  kItemNotFound = 3265,
  kFieldInUse = 3280,
  kIndexExists = 3284,
  kUnionColumnsDiffer = 3307,
  kNullNotAllowed = 3314,
  kZeroLengthNotAllowed = 3315,
  kUnrecognizedFormat = 3343,
  kValueCountDiffers = 3346,
  kTooComplex = 3360,
  kNoUniqueIndex = 3409,
  kObjectInvalid = 3420,
  kConversionError = 3421,
  kCriteriaMismatch = 3464,
};

class EngineError : public std::runtime_error {
 public:
  // `first` and `second` fill the places of the number's message; `position` is the 1-based character of the
  // statement that the error points at, 0 when it points at none.
  explicit EngineError(int number, std::string_view first = {}, std::string_view second = {},
                       int position = 0);

  // The same error with what it is about in front of its text.
  EngineError About(std::string_view what) const;

  int Number() const { return number_; }
  // The text for the user.
  std::string Description() const { return what(); }
  int Position() const { return position_; }

 private:
  EngineError(int number, int position, const std::string& text);

  int number_;
  int position_;
};

}  // namespace scorvane::engine
