// Making the template Kirrelon.dat from readable files.
//
// A table is a CSV file named for it: a first line with the table's field names, then one line a row. A cell
// with a comma in it stands between double quotes; an empty cell is Null; a line that begins with "#" is a
// comment.
//
// A report is a file `reports/NN-title.report`, NN being its key and its place in the list of reports:
//
//   report: Point Standings
//
//   # comments may stand anywhere before the query
//   columns:
//       Driver      | 2200 | left   |       | DriverName
//       Prize Money | 1150 | centre | 0     | PrizeMoney | hidden
//
//   query:
//   SELECT ...
//
// A column is its heading, its width in twips, its alignment (left, centre, right), its format expression,
// the column of the query that it shows, and the word "hidden" when it is not shown at first.
#pragma once

#include <stdexcept>
#include <string>

#include "engine/Database.h"

namespace scorvane::db {

// What is wrong with a source file, as "path:line: what is wrong", without the line when it is 0.
class TemplateError : public std::runtime_error {
 public:
  TemplateError(const std::string& file, int line, const std::string& problem);
};

// Makes the template `path`, which must not exist yet, from the files of a folder. Throws TemplateError for
// the files, EngineError for the database; what is then left at `path` is of no use.
void BuildTemplate(engine::DBEngine& engine, const std::string& sourceFolder, const std::string& path);

}  // namespace scorvane::db
