// The reader of old database files that Windows has: every page is taken for a table's, whatever it says.
#include "FuzzTarget.h"
#include "programs/jet/JetTable.h"

using namespace scorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint32_t kPages = 64;
  try {
    const jet::JetFile file{jet::Buffer(data, size)};
    for (std::uint32_t page = 0; page < kPages; ++page) {
      try {
        const jet::JetTable table(file, page);
        table.ForEachRow([&](const std::vector<jet::Cell>& cells) {
          fuzz::Check(cells.size() == table.Columns().size(), "a row has its table's cells");
          for (std::size_t i = 0; i < cells.size(); ++i) {
            const auto type = table.Columns()[i].type;
            if (!cells[i].set || cells[i].bytes.empty()) continue;
            if (type == jet::kText) file.Text(cells[i].bytes);
            if (type == jet::kMemo) file.Text(file.LongValue(cells[i].bytes));
            if (type == jet::kObject) jet::ReadProperties(file, file.LongValue(cells[i].bytes));
          }
        });
      } catch (const jet::Damaged&) {
      }
    }
  } catch (const jet::Damaged&) {
  }
  return 0;
}
