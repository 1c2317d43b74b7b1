#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// Memory is fresh from the system in each round, or was used by earlier rounds.
enum class Memory { COLD, WARM };

/// One measured round of a task. Returns true on success. Its destruction is not measured.
using Round = std::function<bool()>;

/// Prepares a round from the text of a document. Not measured.
using Prepare = std::function<Round(const std::string& text, Memory memory)>;

/// The same task done by one library.
struct Work {
  std::string task;
  std::string library;
  Prepare prepare;
  bool slow = false;  ///< Takes so long that it is measured cold only.
};

/// The tasks of all libraries, in the order of the report.
std::vector<Work> allWorks();

// The tasks of each library, each in its own source.
void addTarnWorks(std::vector<Work>& works);
void addPugixmlWorks(std::vector<Work>& works);
void addTinyxml2Works(std::vector<Work>& works);
void addLibxml2Works(std::vector<Work>& works);
void addExpatWorks(std::vector<Work>& works);
void addLibyangWorks(std::vector<Work>& works);
void addLimits(std::vector<Work>& works);

// The tasks, by the names that the tables use.
constexpr const char* PARSE = "parse";
constexpr const char* LOAD = "load";
constexpr const char* LOAD_AND_WALK = "load, every index walked";
constexpr const char* LOAD_AND_VALIDATE = "load and validate";
constexpr const char* VALIDATE = "validate";
constexpr const char* PRINT = "print";
constexpr const char* MERGE = "merge of a delta that updates every object";
constexpr const char* RELEASE = "release";
constexpr const char* LIMIT = "limit";

/// A round that owns `state`; `work(State&)` is measured.
template <class State, class Function>
Round roundOn(std::shared_ptr<State> state, Function work) {
  return [state = std::move(state), work] { return work(*state); };
}

}  // namespace bench
