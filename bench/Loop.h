// The hand-written loops: SQLite's own interface, statements prepared once, one transaction.
#pragma once

#include <string>
#include <vector>

namespace scorvane::bench {

// Reads the files, stages them, applies the two built-in bonuses and stores the races, as an import does.
void ImportLoop(const std::string& league, const std::string& templateDb,
                const std::vector<std::string>& files);

// Numbers and scores every race anew.
void RecalculateLoop(const std::string& league, const std::string& templateDb);

// The standings with each driver's worst races left out, in one statement; yields its rows' points in order.
std::vector<int> StandingsStatement(const std::string& league, int dropped);

// One number, for comparing what the two left behind.
double Ask(const std::string& league, const char* sql);

// The rows of a statement, each field as text.
std::vector<std::vector<std::string>> Rows(const std::string& league, const char* sql);

}  // namespace scorvane::bench
