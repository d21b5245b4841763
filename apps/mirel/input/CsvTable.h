/// Tables in text files, as loggers and spreadsheets write them.
#pragma once

#include "Errors.h"

#include <string>
#include <string_view>
#include <vector>

namespace mirel {

/// Rows of cells, each row with as many as the first one.
///
/// Cells are separated by semicolons, tabs, commas or blanks: the first of these that the first row has outside quotes.
/// Blanks around cells, a byte order mark, line ends with carriage returns, blank lines, and lines that begin with # or
/// % are skipped. Heads are the first row if it has a cell that is text, else the last comment before it with as many
/// cells. A row may have further cells as long as they are empty, 10,000 in all.
class CsvTable {
 public:
  /// @param name  of the file, for messages
  ///
  /// Throws `UsageError` when there is no row of data, or one with another number of cells.
  CsvTable(std::string name, std::string text);
  CsvTable(const CsvTable&) = delete;
  CsvTable& operator=(const CsvTable&) = delete;

  const std::string& name() const { return name_; }
  std::size_t rows() const { return lines_.size(); }
  std::size_t columns() const { return columns_; }

  /// One per column; empty texts when the file has none.
  const std::vector<std::string>& heads() const { return heads_; }
  bool hasHeads() const { return hasHeads_; }

  /// The text of a cell, without quotes around it.
  std::string_view cell(std::size_t row, std::size_t column) const { return cells_[row * columns_ + column]; }

  /// The finite number in a cell; throws `UsageError` that says where it is missing.
  double number(std::size_t row, std::size_t column) const;

  /// The same, refused beyond -most and most.
  double number(std::size_t row, std::size_t column, double most) const;

  /// The column that a user means by a head or a number from 1 on; throws `UsageError` that begins with `option`.
  std::size_t columnOf(const std::string& option, const std::string& text) const;

  /// "column 2 (gyro_x)".
  std::string describe(std::size_t column) const;

  /// File and line of the heads.
  std::string headPlace() const;

  /// An error in a row: file, line, text.
  UsageError errorAt(std::size_t row, const std::string& text) const;

 private:
  void addRow(std::vector<std::string_view>& row, std::size_t line);
  std::vector<std::string_view> split(std::string_view line, std::size_t number) const;

  std::string name_, text_;
  char separator_ = 0;
  bool hasHeads_ = false;
  std::size_t columns_ = 0, headLine_ = 0;
  std::vector<std::string> heads_;
  std::vector<std::string_view> cells_;
  std::vector<std::size_t> lines_;
};

/// The number that the whole text is, in the C locale; a plus sign may stand before it.
///
/// @return  false when it is none, or one that a double does not hold
bool parseNumber(std::string_view text, double& value);

/// The parts of a list such as "1,2,gyro x", without blanks around them.
std::vector<std::string> splitList(const std::string& text);

}  // namespace mirel
