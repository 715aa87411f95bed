#include "engine/EngineError.h"

#include <fmt/format.h>

namespace scorvane::engine {
namespace {

struct Message {
  int number;
  const char* text;  // {0} and {1} take what the thrower names
};

constexpr Message kMessages[] = {
    {kInvalidArgument, "Invalid argument for the function '{0}'."},
    {kOverflow, "Overflow: the value {0} does not fit the field or type '{1}'."},
    {kDivisionByZero, "Division by zero."},
    {kTypeMismatch, "Type mismatch: '{0}' is not a number."},
    {kInvalidUseOfNull, "Invalid use of Null."},
    {kTableExists, "Table '{0}' already exists."},
    {kNoCurrentRecord, "No current record."},
    {kDuplicateKey,
     "The changes you requested to the table '{0}' were not successful because they would create duplicate "
     "values in "
     "the index, primary key, or relationship. Change the data in the field or fields that contain duplicate "
     "data, "
     "remove the index, or redefine the index to permit duplicate entries and try again."},
    {kFileNotFound, "Could not find file '{0}'."},
    {kDiskFull, "Not enough space on disk."},
    {kReadOnly, "Cannot update. Database or object is read-only."},
    {kNoTransaction, "The transaction has been rolled back after an error; nothing of it was kept."},
    {kOutOfMemory, "System resource exceeded: not enough memory."},
    {kDiskError, "Disk or network error while the file '{0}' was read or written."},
    {kInvalidPath,
     "'{0}' is not a valid path. Make sure that the path name is spelled correctly and that you are "
     "connected to the "
     "server on which the file resides."},
    {kFileInUse, "Could not use '{0}'; file already in use by another program."},
    {kDatabaseDamaged,
     "Cannot open database '{0}'. It may not be a database that your application recognizes, or the "
     "file may be corrupt.{1}"},
    {kCannotOpenFile,
     "Cannot open the file '{0}'. It is already opened exclusively by another user, or you need permission "
     "to view and "
     "write its data."},
    {kNullInIndex, "Index or primary key cannot contain a Null value: '{0}'."},
    {kQueryStopped, "The query was stopped: {0}."},
    {kTooFewParameters, "Too few parameters. Expected {0}: no table of the statement has a field {1}."},
    {kIsSelectQuery, "Cannot execute a select query."},
    {kNotUpdatable, "Operation must use an updateable query."},
    {kSyntaxError, "Syntax error in query expression: {0}."},
    {kUnknownTable,
     "Cannot find the input table or query '{0}'. Make sure it exists and that its name is spelled "
     "correctly."},
    {kAmbiguousField,
     "The specified field '{0}' could refer to more than one table listed in the FROM clause of your SQL "
     "statement."},
    {kUndefinedFunction, "Undefined function '{0}' in expression."},
    {kOrderByConflictsWithDistinct, "ORDER BY clause ({0}) conflicts with DISTINCT."},
    {kCircularAlias, "Circular reference caused by alias '{0}' in query definition's SELECT list."},
    {kNotAggregate,
     "You tried to execute a query that does not include the specified expression '{0}' as part of an "
     "aggregate "
     "function."},
    {kInvalidName, "'{0}' is not a valid name."},
    {kUnknownInsertField, "The INSERT INTO statement contains the following unknown field name: '{0}'."},
    {kFieldTooSmall,
     "The field '{0}' is too small to accept the amount of data you attempted to add ({1}). Try inserting or "
     "pasting "
     "less data."},
    {kRecordDeleted, "Record is deleted."},
    {kFieldExists, "Cannot define field '{0}' more than once."},
    {kRelatedRecordsExist,
     "The record cannot be deleted or changed because table '{0}' includes related records."},
    {kRelatedRecordRequired,
     "You cannot add or change a record because a related record is required in table '{0}'."},
    {kDatabaseExists, "Database '{0}' already exists."},
    {kInvalidOperation, "Invalid operation."},
    {kItemNotFound, "Item not found in this collection: '{0}'."},
    {kFieldInUse, "Cannot delete the field '{0}': it is part of an index or is needed by the system."},
    {kIndexExists, "Index '{0}' already exists."},
    {kUnionColumnsDiffer,
     "The number of columns in the two selected tables or queries of a union query do not match."},
    {kNullNotAllowed,
     "The field '{0}' cannot contain a Null value because the Required property for this field is set to "
     "True. Enter a "
     "value in this field."},
    {kZeroLengthNotAllowed, "Field '{0}' cannot be a zero-length string."},
    {kUnrecognizedFormat, "Unrecognized database format '{0}'.{1}"},
    {kValueCountDiffers, "Number of query values and destination fields are not the same."},
    {kTooComplex, "Query is too complex: {0}."},
    {kNoUniqueIndex, "No unique index found for the referenced field '{0}' of the primary table."},
    {kObjectInvalid, "Object invalid or no longer set: the database of these records has been closed."},
    {kConversionError, "Data type conversion error: '{0}' does not suit the field '{1}'."},
    {kCriteriaMismatch, "Data type mismatch in criteria expression: {0}."},
};

// A value may be a whole book; a message shows how it begins.
constexpr std::size_t kLongestShown = 500;

std::string Shown(std::string_view text) {
  if (text.size() <= kLongestShown) return std::string(text);
  std::size_t end = kLongestShown;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return std::string(text.substr(0, end)) + "…";
}

std::string Text(int number, std::string_view first, std::string_view second, int position) {
  std::string text;
  for (const Message& message : kMessages) {
    if (message.number == number) {
      text = fmt::format(fmt::runtime(message.text), Shown(first), Shown(second));
      break;
    }
  }
  if (text.empty()) text = fmt::format("Error {}. {}", number, first);
  if (position > 0) text += fmt::format(" (character {} of the statement)", position);
  return text;
}

}  // namespace

EngineError::EngineError(int number, std::string_view first, std::string_view second, int position)
    : std::runtime_error(Text(number, first, second, position)), number_(number), position_(position) {}

}  // namespace scorvane::engine
