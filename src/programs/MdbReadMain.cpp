// scorvane-mdbread FILE: writes what a database file of the old format holds to the standard output, a JSON
// value a line, for the program that converts it. The library that reads such files has been seen to crash
// and to hang on damaged ones, so it works here, apart, under limits that the caller sets.
//
//   {"table": name, "counter": n, "fields": [...], "indexes": [...]}    then its rows, an array each
//   {"relation": name, ...}
//   {"end": rows written}                                               nothing is complete without it
#include <glib.h>
#include <mdbtools.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kTextRoom = 1 << 18;
constexpr int kNextCounterPlace = 20;     // in a table's first page, files of version 4
constexpr int kNextCounterPlaceOld = 16;  // of version 3

void WriteLine(const Json& value) {
  const std::string line = value.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
}

bool Is(const char* property, const char* value) {
  return property != nullptr && strcasecmp(property, value) == 0;
}

// A table that is open, with room for the text of each column.
class Table {
 public:
  Table(MdbHandle* file, MdbCatalogEntry* entry) : file_(file), entry_(entry), def_(mdb_read_table(entry)) {
    if (def_ == nullptr) return;
    mdb_read_columns(def_);
    texts_.resize(def_->num_cols);
    lengths_.resize(def_->num_cols);
    for (unsigned i = 0; i < def_->num_cols; ++i) {
      texts_[i] = std::make_unique<char[]>(kTextRoom);
      mdb_bind_column(def_, static_cast<int>(i) + 1, texts_[i].get(), &lengths_[i]);
    }
  }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() {
    if (def_ != nullptr) mdb_free_tabledef(def_);
  }

  bool IsOpen() const { return def_ != nullptr && def_->num_cols > 0; }

  Json Describe() const {
    Json fields = Json::array();
    for (unsigned i = 0; i < def_->num_cols; ++i) {
      const MdbColumn* column = Column(i);
      Json field;
      field["name"] = column->name;
      field["type"] = column->col_type;
      // Files of version 4 keep two bytes a character.
      const bool wide = column->col_type == MDB_TEXT && !IS_JET3(file_);
      field["size"] = column->col_type == MDB_TEXT ? column->col_size / (wide ? 2 : 1) : 0;
      field["counter"] = column->is_long_auto != 0;
      field["required"] = Is(mdb_col_get_prop(column, "Required"), "yes");
      field["zeroLength"] = Is(mdb_col_get_prop(column, "AllowZeroLength"), "yes");
      const char* standard = mdb_col_get_prop(column, "DefaultValue");
      field["default"] = standard == nullptr ? "" : standard;
      fields.push_back(std::move(field));
    }
    Json indexes = Json::array();
    mdb_read_indices(def_);
    for (unsigned i = 0; i < def_->num_idxs && def_->indices != nullptr && i < def_->indices->len; ++i) {
      const auto* index = static_cast<MdbIndex*>(g_ptr_array_index(def_->indices, i));
      if (index->index_type == 2) continue;  // belongs to a relation
      Json columns = Json::array();
      for (unsigned k = 0; k < index->num_keys; ++k) {
        const auto number = static_cast<unsigned>(index->key_col_num[k]);
        if (number >= 1 && number <= def_->num_cols) columns.push_back(Column(number - 1)->name);
      }
      indexes.push_back({{"name", index->name},
                         {"primary", index->index_type == 1},
                         {"unique", (index->flags & MDB_IDX_UNIQUE) != 0},
                         {"required", (index->flags & MDB_IDX_REQUIRED) != 0},
                         {"fields", std::move(columns)}});
    }
    long counter = 0;
    if (mdb_read_pg(file_, entry_->table_pg) > 0)
      counter = mdb_pg_get_int32(file_, IS_JET3(file_) ? kNextCounterPlaceOld : kNextCounterPlace);
    return {{"table", entry_->object_name},
            {"counter", counter},
            {"fields", std::move(fields)},
            {"indexes", std::move(indexes)}};
  }

  bool NextRow() { return mdb_fetch_row(def_) != 0; }
  void Rewind() { mdb_rewind_table(def_); }

  Json Row() const {
    Json row = Json::array();
    for (unsigned i = 0; i < def_->num_cols; ++i) row.push_back(Value(i));
    return row;
  }

  Json ValueOf(const char* name) const {
    for (unsigned i = 0; i < def_->num_cols; ++i)
      if (strcasecmp(Column(i)->name, name) == 0) return Value(i);
    return nullptr;
  }

 private:
  MdbColumn* Column(unsigned i) const { return static_cast<MdbColumn*>(g_ptr_array_index(def_->columns, i)); }

  Json Value(unsigned i) const {
    const MdbColumn* column = Column(i);
    const char* text = texts_[i].get();
    if (column->col_type == MDB_BOOL) return text[0] == '1' || Is(text, "true");
    if (lengths_[i] == 0 || column->cur_value_len == 0) return nullptr;
    switch (column->col_type) {
      case MDB_BYTE:
      case MDB_INT:
      case MDB_LONGINT:
        return std::strtol(text, nullptr, 10);
      case MDB_FLOAT: {
        // Its bits, not its printed digits.
        const double number = static_cast<double>(mdb_pg_get_single(file_, column->cur_value_start));
        return std::isfinite(number) ? Json(number) : Json();
      }
      case MDB_DOUBLE:
      case MDB_DATETIME: {
        const double number = mdb_pg_get_double(file_, column->cur_value_start);
        return std::isfinite(number) ? Json(number) : Json();
      }
      case MDB_MONEY:
      case MDB_NUMERIC:
        return std::strtod(text, nullptr);
      default:
        return std::string(text);
    }
  }

  MdbHandle* file_;
  MdbCatalogEntry* entry_;
  MdbTableDef* def_;
  std::vector<std::unique_ptr<char[]>> texts_;
  std::vector<int> lengths_;
};

void WriteRelations(MdbHandle* file) {
  MdbCatalogEntry* entry = mdb_get_catalogentry_by_name(file, "MSysRelationships");
  if (entry == nullptr) return;
  Table table(file, entry);
  if (!table.IsOpen()) return;
  for (table.Rewind(); table.NextRow();) {
    WriteLine({{"relation", table.ValueOf("szRelationship")},
               {"attributes", table.ValueOf("grbit")},
               {"columns", table.ValueOf("ccolumn")},
               {"foreignTable", table.ValueOf("szObject")},
               {"foreignField", table.ValueOf("szColumn")},
               {"table", table.ValueOf("szReferencedObject")},
               {"field", table.ValueOf("szReferencedColumn")}});
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = scorvane::platform::StartConsoleProgram(argc, argv);
  if (arguments.size() != 2) {
    std::fprintf(stderr, "usage: scorvane-mdbread FILE\n");
    return 2;
  }
  MdbHandle* file = mdb_open(arguments[1].c_str(), MDB_NOFLAGS);
  if (file == nullptr || mdb_read_catalog(file, MDB_ANY) == nullptr) return 1;
  mdb_set_bind_size(file, kTextRoom);
  mdb_set_boolean_fmt_numbers(file);
  long rows = 0;
  for (unsigned i = 0; i < file->num_catalog; ++i) {
    auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(file->catalog, i));
    if (entry->object_type != MDB_TABLE || mdb_is_system_table(entry) != 0) continue;
    Table table(file, entry);
    if (!table.IsOpen()) continue;
    WriteLine(table.Describe());
    for (table.Rewind(); table.NextRow(); ++rows) WriteLine(table.Row());
  }
  WriteRelations(file);
  WriteLine({{"end", rows}});
  return std::fflush(stdout) == 0 ? 0 : 1;
}
