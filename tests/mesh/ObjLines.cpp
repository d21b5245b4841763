#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <MirelAlgorithms/mesh/internal/LinePieces.h>
#include <MirelAlgorithms/mesh/internal/ObjLines.h>
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace MirelAlgorithms::obj {
namespace {

// Lines from the parts of which numbers and faces consist, in usual places and in others.
class RandomLines {
 public:
  std::string next(const char* keyword) {
    std::string line = keyword;
    const unsigned form = random_() % 8;
    for (unsigned left = 2 + random_() % 4; left > 0; --left) {
      line += (random_() % 16 ? " " : pick({"", "\t", "  ", "\r", "\v", " \t", "x"})) + number();
      if (form == 1) line.append("//").append(number());
      if (form == 2) line.append("/").append(number()).append("/").append(number());
      if (form == 3) line += pick({"//", "/", "/1", "//-1", "/1/", "/1/2", "/ 1/ 2"});
    }
    if (random_() % 12 == 0) line[line.size() - 1 - random_() % 4] = static_cast<char>('\v' + random_() % 245);
    if (random_() % 50 == 0) line.append(random_() % 1000, ' ');
    line.resize(std::min(line.size(), LinePieces::longest - 2));
    return line + pick({"\n", "\n", "\n", "\r\n", " \n", ""});
  }

 private:
  std::string pick(std::initializer_list<const char*> texts) { return texts.begin()[random_() % texts.size()]; }

  std::string number() {
    const unsigned form = random_() % 8;
    if (form == 0) return unusual_[random_() % unusual_.size()];
    if (form == 1) return digits(1 + random_() % 30) + "." + digits(random_() % 30);
    if (form == 2)
      return std::string("-") + digits(1 + random_() % 3) + "." + digits(random_() % 18) + pick({"e", "E-", "e+"}) +
             digits(1 + random_() % 3);
    return pick({"", "", "-"}) + digits(1 + random_() % 3);
  }

  std::string digits(std::size_t count) {
    std::string text;
    while (text.size() < count) text += static_cast<char>('0' + random_() % 10);
    return text;
  }

  std::mt19937 random_{1};
  std::istringstream list_{
      "+1 -0 1e400 -1e-400 inf nan nan(1) 0x10 0x1.8p3 1e 1e+ .5 5. -.5e-3 4.9e-324 0x --1 1,5 00012 1e0005 - . e5 "
      "1e99999999999 99999999999 4294967297 -2147483648 179769313486231580793e289 9007199254740993"};
  const std::vector<std::string> unusual_{std::istream_iterator<std::string>(list_), {}};
};

// Whether a line is read: both ways or neither, and to the same bits.
template <class Record, class Quick, class Scan>
bool isRead(const std::string& line, const Quick& quick, const Scan& scan) {
  Record found{}, wanted{};
  const bool readable = scan(line, wanted);
  EXPECT_EQ(quick(line, found), readable) << testing::PrintToString(line);
  EXPECT_TRUE(!readable || std::memcmp(&found, &wanted, sizeof found) == 0) << testing::PrintToString(line);
  return readable;
}

TEST(ObjLines, quickReadingIsThatOfTheCLibrary) {
  RandomLines lines;
  int vertices = 0, coordinates = 0, faces = 0;
  for (int i = 0; i < 80000 && !testing::Test::HasFailure(); ++i) {
    vertices += isRead<vec3f>(lines.next("v "), readVertex, scanVertex);
    coordinates += isRead<vec3f>(lines.next("vt "), readCoordinate, scanCoordinate);
    const std::string face = lines.next("f");
    const bool readable = isRead<Face>(face, readFace, scanFace);
    EXPECT_EQ(isReadableFace(face.c_str()), readable) << testing::PrintToString(face);
    faces += readable;
  }
  for (const int count : {vertices, coordinates, faces}) EXPECT_GT(count, 8000);
}

}  // namespace
}  // namespace MirelAlgorithms::obj
