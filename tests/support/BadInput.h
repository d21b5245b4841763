/// Pairs of a function and a defect in what it is given: what the call does, to the letter, and that it changes nothing
/// else. One test per function, one row per pair; a failing row is named, and every test prints how many it has.
///
///     BadInput pairs("textureExtract");
///     pairs.keep(points, descriptors);  // in all rows
///     pairs.expect("empty image", "1", [&] { return textureExtract({}, points, descriptors, {}); });
#pragma once

#include <MirelAlgorithms/SettingsCatalogue.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>
#include <support/SettingsOf.h>

#include <cfenv>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <locale>
#include <new>
#include <opencv2/core.hpp>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace MirelAlgorithms {

/// How outcomes begin that are refusals.
inline const std::string refused = "invalid_argument: ";

/// What a call does: "done", the value it returns, or the class of the exception and what that says. OpenCV's texts
/// differ from version to version, so its errors have their code: -215 is a failed assertion.
template <class Call>
std::string outcomeOf(const Call& call) {
  using Result = decltype(call());
  try {
    if constexpr (std::is_void_v<Result>)
      return call(), "done";
    else if constexpr (std::is_convertible_v<Result, std::string>)
      return call();
    else
      return testing::PrintToString(call());
  } catch (const cv::Exception& error) {
    return "OpenCV error " + std::to_string(error.code);
  } catch (const std::bad_alloc&) {
    return "bad_alloc";
  } catch (const std::exception& error) {
    const auto is = [&](const std::type_info& type) { return typeid(error) == type; };
    const char* name = is(typeid(std::invalid_argument)) ? "invalid_argument"
                       : is(typeid(std::out_of_range))   ? "out_of_range"
                       : is(typeid(std::runtime_error))  ? "runtime_error"
                                                         : typeid(error).name();
    return std::string(name) + ": " + error.what();
  }
}

/// All bytes of values that a call must leave alone; of matrices also where they lie, of functions what they return.
class Bytes {
 public:
  template <class T>
  void add(const T& value) {
    if constexpr (std::is_invocable_v<T>) {
      add(value());
    } else {
      static_assert(std::is_standard_layout_v<T> && std::is_trivially_destructible_v<T>);
      bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
  }
  template <class T>
  void add(const std::vector<T>& values) {
    add(values.size());
    for (const T& value : values) add(value);
  }
  void add(const std::string& text) { (bytes_ += text) += '\0'; }
  void add(const cv::Mat& matrix) {
    for (const int number : {matrix.dims, matrix.type(), matrix.rows, matrix.cols}) add(number);
    add(matrix.data);
    if (matrix.dims > 2) return;
    for (int i = 0; i < matrix.rows; ++i)
      bytes_.append(matrix.ptr<char>(i), static_cast<std::size_t>(matrix.cols) * matrix.elemSize());
  }
  void add(const Settings& settings) {
    static const std::vector<SettingInfo> catalogue = settingsCatalogue();
    if (!settings) return;
    for (const SettingInfo& info : catalogue) {
      const AttrContainer::Value* value = settings->find(info.key.c_str());
      add(value ? value->index() : std::variant_npos);
      if (value) std::visit([this](const auto& held) { addHeld(held); }, *value);
    }
  }

  /// All of them, one after the other.
  const std::string& text() const { return bytes_; }

  friend bool operator==(const Bytes&, const Bytes&) = default;

 private:
  void addHeld(const String& text) { add(text.stringAnsi()); }
  template <class T>
  void addHeld(const T& value) {
    add(value);
  }

  std::string bytes_;
};

/// Settings in which every key has a value of another type than it should have.
inline Settings settingsOfOtherTypes() {
  Settings settings(new AttrContainer());
  for (const SettingInfo& info : settingsCatalogue())
    if (std::holds_alternative<int>(info.fallback))
      settings->set(info.key.c_str(), 1e9);
    else
      settings->set(info.key.c_str(), -7);
  return settings;
}

/// The pairs of one function.
class BadInput {
 public:
  explicit BadInput(const char* function) : function_(function) {}
  ~BadInput() { std::printf("[  PAIRS   ] %s: %zu\n", function_, defects_.size()); }
  BadInput(const BadInput&) = delete;
  BadInput& operator=(const BadInput&) = delete;

  /// Values that must stay as they are in all rows that follow; functions are asked for them.
  template <class... T>
  void keep(const T&... values) {
    (kept_.push_back([&values](Bytes& bytes) { bytes.add(values); }), ...);
  }

  /// One pair: a defect, what the call does, the call, and values of this row that must stay as they are. Lines that
  /// are logged follow the outcome.
  template <class Call, class... T>
  void expect(const std::string& defect, const std::string& outcome, const Call& call, const T&... values) {
    SCOPED_TRACE(std::string(function_) + ": " + defect);
    EXPECT_TRUE(defects_.insert(defect).second) << "there are two rows of this name";
    const auto bytes = [&] {
      Bytes all;
      for (const auto& add : kept_) add(all);
      (all.add(values), ...);
      return all;
    };
    LogCapture log(1);
    cv::theRNG().state = 0x0123456789abcdef;
    std::srand(7);
    const int random = std::rand();
    std::srand(7);
    const Bytes before = bytes();
    const std::string host = hostState();
    const std::string found = outcomeOf(call);
    EXPECT_EQ(found + logged(log), outcome);
    EXPECT_TRUE(bytes() == before) << "an input or an output was changed";
    EXPECT_EQ(hostState(), host);
    EXPECT_EQ(std::rand(), random) << "the sequence of the C library was disturbed";
    MirelCore::log("", 0, "", 1, L"still there");
    EXPECT_TRUE(!log.records.empty() && log.records.back().message == L"still there") << "the sink was replaced";
  }

 private:
  static std::string logged(const LogCapture& log) {
    std::string lines;
    for (const auto& record : log.records) lines += "; " + String(record.message.c_str()).stringAnsi();
    return lines;
  }

  static std::string hostState() {
    std::ostringstream state;
    state << cv::theRNG().state << ' ' << std::setlocale(LC_ALL, nullptr) << ' ' << std::locale().name() << ' '
          << std::filesystem::current_path() << ' ' << std::fegetround() << ' ' << cv::getNumThreads() << ' '
          << MirelCore::shouldLog(1) << MirelCore::shouldLog(2);
    return state.str();
  }

  const char* function_;
  std::set<std::string> defects_;
  std::vector<std::function<void(Bytes&)>> kept_;
};

}  // namespace MirelAlgorithms
