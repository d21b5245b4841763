#include "meshes/ObjReader.h"

#include "input/CsvTable.h"

#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace mirel {

namespace {

constexpr std::string_view blanks = " \t\v\f";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t longestLine = 998;  // that the loader reads in one piece, without its line feed
constexpr std::size_t mostCorners = 1'000'000;
constexpr double largest = 1e30;  // products of several coordinates stay below the end of double

std::string_view withoutLeading(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text;
}

/// Takes the first word off; empty at the end and at a comment.
std::string_view takeWord(std::string_view& text) {
  text = withoutLeading(text);
  if (text.starts_with('#')) return {};
  const std::string_view word = text.substr(0, text.find_first_of(blanks));
  text.remove_prefix(word.size());
  return word;
}

std::string_view trimmedName(std::string_view text) {
  text = withoutLeading(text);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// The start of a line, without what would break the message.
std::string shortened(std::string_view line) {
  constexpr std::size_t most = 60;
  std::string text(line.substr(0, most));
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 32 || c == 127; }, ' ');
  return line.size() > most ? text + "..." : text;
}

/// How a corner is written: 1, 1/, 1/2, 1/2/, 1//, 1//3, 1/2/3.
struct CornerForm {
  int slashes = 0;
  bool texture = false, normal = false;

  bool operator==(const CornerForm&) const = default;
};

bool takeIndex(std::string_view& word, std::int64_t& index) {
  if (word.size() > 1 && word[0] == '+' && word[1] != '-') word.remove_prefix(1);
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), index);
  if (stop == word.data()) return false;
  if (error != std::errc()) index = word[0] == '-' ? INT64_MIN : INT64_MAX;
  word.remove_prefix(static_cast<std::size_t>(stop - word.data()));
  return true;
}

bool parseCorner(std::string_view word, ObjCorner& corner, CornerForm& form) {
  std::int64_t normal = 0;
  corner = {};
  form = {};
  if (!takeIndex(word, corner.vertex)) return false;
  if (word.starts_with('/')) {
    word.remove_prefix(1);
    form.slashes = 1;
    form.texture = takeIndex(word, corner.texture);
    if (word.starts_with('/')) {
      word.remove_prefix(1);
      form.slashes = 2;
      form.normal = takeIndex(word, normal);
    }
  }
  return word.empty();
}

/// Whether the loader has this form; the same in all corners.
bool isLoadable(const CornerForm& form) {
  return form.slashes == 0 || (form.slashes == 2 && (form.normal || !form.texture));
}

}  // namespace

ObjReader::ObjReader(std::string name, std::string_view text) : name_(std::move(name)), text_(text) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    throw UsageError(name_ + ": text of 16 bits per character, UTF-8 expected");
  }
  if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) {
    throw UsageError(fmt::format("{}:{}: a zero byte, an OBJ file of text expected", name_,
                                 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n')));
  }
  lineFeed_ = text_.find('\n');
}

UsageError ObjReader::errorAt(const ObjStatement& statement, const std::string& problem) const {
  return UsageError(fmt::format("{}:{}: '{}': {}", name_, statement.line, shortened(statement.shown), problem));
}

// The place of the next line feed is kept, so that files without any are not searched again for every line.
std::string_view ObjReader::physicalLine(bool& regularEnd) {
  const std::size_t begin = at_;
  if (lineFeed_ < begin) lineFeed_ = text_.find('\n', begin);
  const std::size_t end = std::min(lineFeed_, text_.size());
  std::string_view line = text_.substr(begin, end - begin);
  const std::size_t carriageReturn = line.find('\r');
  regularEnd = carriageReturn == std::string_view::npos || carriageReturn + 1 == line.size();
  line = line.substr(0, carriageReturn);
  at_ = begin + line.size() + (regularEnd && carriageReturn != std::string_view::npos ? 2 : 1);
  ++line_;
  return line;
}

std::string_view ObjReader::logicalLine(ObjStatement& statement) {
  bool regularEnd = true;
  std::string_view line = physicalLine(regularEnd);
  statement.line = line_;
  statement.shown = line;
  statement.irregular = "";
  if (!regularEnd) statement.irregular = "line ends";
  if (line.size() + 1 > longestLine) statement.irregular = "long lines";
  if (line_ == 1 && line.starts_with(byteOrderMark)) {
    statement.irregular = "byte order mark";
    line.remove_prefix(byteOrderMark.size());
  }
  if (!line.ends_with('\\') || withoutLeading(line).starts_with('#')) return line;
  statement.irregular = "continued lines";
  joined_.clear();
  while (line.ends_with('\\')) {
    joined_ += line.substr(0, line.size() - 1);
    joined_ += ' ';
    line = at_ < text_.size() ? physicalLine(regularEnd) : std::string_view();
  }
  joined_ += line;
  return joined_;
}

bool ObjReader::next(ObjStatement& statement) {
  if (at_ >= text_.size()) return false;
  const std::string_view whole = logicalLine(statement);
  std::string_view rest = withoutLeading(whole);
  const bool indented = rest.size() < whole.size();
  const std::string_view line = rest, word = rest.starts_with('f') ? "f" : takeWord(rest);
  statement.kind = ObjStatement::other;
  const auto found = [&](ObjStatement::Kind kind, bool sameForLoader) {
    statement.kind = kind;
    if (indented || !sameForLoader) statement.irregular = "blanks";
  };
  if (word == "v") {
    found(ObjStatement::vertex, rest.starts_with(' '));
    readNumbers(statement, rest, 3, 3);
    ++vertices_;
  } else if (word == "vt") {
    found(ObjStatement::texture, rest.starts_with(' '));
    readNumbers(statement, rest, 1, 2);
    ++textures_;
  } else if (word == "f") {
    found(ObjStatement::face, true);
    readFace(statement, line);
  } else if (word == "mtllib" || word == "usemtl") {
    found(word == "mtllib" ? ObjStatement::library : ObjStatement::material, true);
    statement.name = trimmedName(rest);
    if (statement.name.size() + word.size() + 1 > longestLine) throw errorAt(statement, "a shorter name expected");
  } else if (line.starts_with("mtllib") || line.starts_with("usemtl")) {
    statement.irregular = "unknown statements";
  }
  return true;
}

void ObjReader::readNumbers(ObjStatement& statement, std::string_view values, std::size_t least,
                            std::size_t most) const {
  statement.numbers = {};
  for (std::size_t i = 0; i < most; ++i) {
    const std::string_view word = takeWord(values);
    if (word.empty() && i >= least) {
      statement.irregular = "texture coordinates with one value";
      return;
    }
    if (parseNumber(word, statement.numbers[i]) && std::abs(statement.numbers[i]) <= largest) continue;
    const std::string given = word.empty() ? "a number is missing" : fmt::format("'{}' given", shortened(word));
    throw errorAt(statement, fmt::format("{}, {} numbers between -1e30 and 1e30 expected", given,
                                         most == 3 ? "three" : "one or two"));
  }
}

void ObjReader::readFace(ObjStatement& statement, std::string_view line) {
  std::string_view rest = line.substr(1);
  CornerForm first, form;
  statement.corners.clear();
  for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
    ObjCorner corner;
    if (!parseCorner(word, corner, form)) {
      throw errorAt(statement,
                    fmt::format("'{}' given, corners such as 7, 7/3, 7//2 or 7/3/2 expected", shortened(word)));
    }
    if (statement.corners.empty()) first = form;
    if (form != first) statement.irregular = "mixed corners";
    if (corner.vertex < 0 || corner.texture < 0) statement.irregular = "relative indices";
    corner.vertex = resolve(statement, corner.vertex, vertices_, "vertex");
    if (form.texture) corner.texture = resolve(statement, corner.texture, textures_, "texture coordinate");
    if (statement.corners.size() == mostCorners) throw errorAt(statement, "more than a million corners");
    statement.corners.push_back(corner);
  }
  if (statement.corners.size() < 3) {
    throw errorAt(statement, fmt::format("{} corners given, at least 3 expected", statement.corners.size()));
  }
  if (statement.corners.size() > 3) statement.irregular = "polygons";
  if (!isLoadable(first)) statement.irregular = "corners such as 7/3";
  if (*statement.irregular != '\0') return;
  terminated_ = line;
  if (!MirelAlgorithms::isReadableFace(terminated_.c_str())) statement.irregular = "forms of faces";
}

std::int64_t ObjReader::resolve(const ObjStatement& statement, std::int64_t index, std::int64_t count,
                                const char* what) const {
  if (index == 0) throw errorAt(statement, fmt::format("{} 0 given, numbers from 1 on expected", what));
  if (index > 0) return index;
  if (index < -count) {
    throw errorAt(statement, fmt::format("{} {} given, {} lines before this one", what, index, count));
  }
  return count + index + 1;
}

}  // namespace mirel
