#pragma once

#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TempFolder.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace Tests {

using MarkdownCells = std::vector<std::string>;

/// The trimmed cells of a line of a table; none for another line.
inline MarkdownCells MarkdownCellsOf(const std::string& line) {
    MarkdownCells cells;
    if (!line.starts_with("|")) {
        return cells;
    }
    std::istringstream stream(line.substr(1));
    for (std::string cell; std::getline(stream, cell, '|');) {
        const auto begin = cell.find_first_not_of(' ');
        const auto end = cell.find_last_not_of(' ');
        cells.push_back(begin == std::string::npos ? "" : cell.substr(begin, end - begin + 1));
    }
    return cells;
}

inline std::string WithoutTicks(std::string text) {
    std::erase(text, '`');
    return text;
}

/// The rows, by their first cell, of the table of a page whose titles begin with these. Empty when there is none.
inline std::map<std::string, MarkdownCells> MarkdownTable(const std::string& page, const MarkdownCells& titles) {
    std::map<std::string, MarkdownCells> rows;
    std::istringstream stream(ReadWholeFile(SourceFile(page)));
    bool inside = false;
    for (std::string line; std::getline(stream, line);) {
        const MarkdownCells cells = MarkdownCellsOf(line);
        if (!inside) {
            inside = cells.size() >= titles.size() && std::equal(titles.begin(), titles.end(), cells.begin());
        } else if (cells.empty()) {
            break;
        } else if (!cells.front().starts_with("---")) {
            rows[WithoutTicks(cells.front())] = cells;
        }
    }
    return rows;
}

} // namespace Tests
