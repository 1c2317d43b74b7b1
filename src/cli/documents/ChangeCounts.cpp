#include "documents/ChangeCounts.hpp"

#include <fmt/format.h>

#include <utility>

#include "CommandError.hpp"
#include "output/counted.hpp"
#include "output/printable.hpp"

namespace tarn {

ChangeCounts::ChangeCounts(std::string path, const char* verb)
    : path_(std::move(path)), verb_(verb) {}

std::size_t ChangeCounts::addValue(const std::string& name) {
  values_.push_back({name, 0});
  return values_.size() - 1;
}

void ChangeCounts::endObject() {
  ++objects_;
  if (wasChanged_) ++changedObjects_;
}

void ChangeCounts::noteChanged() {
  ++changedValues_;
  wasChanged_ = true;
}

void ChangeCounts::requireEachValue() const {
  for (const Value& value : values_) {
    if (value.lacking < objects_) continue;
    throw CommandError(Status::NothingMatched, path_,
                       objects_ == 1 ? fmt::format("the object has no value '{}'", value.name)
                                     : fmt::format("none of the {} objects has a value '{}'",
                                                   objects_, value.name));
  }
}

std::string ChangeCounts::report() const {
  std::string text =
      fmt::format("{}: {} of {} changed, {} {}", printable(path_), changedObjects_,
                  counted(objects_, "object"), counted(changedValues_, "value"), verb_);
  if (equal_ > 0) text += fmt::format(", {} had it already", counted(equal_, "object"));
  for (const Value& value : values_) {
    if (value.lacking == 0) continue;
    text += fmt::format(
        ", {} no '{}'",
        value.lacking == 1 ? "1 object has" : std::to_string(value.lacking) + " objects have",
        printable(value.name));
  }
  return text + "\n";
}

}  // namespace tarn
