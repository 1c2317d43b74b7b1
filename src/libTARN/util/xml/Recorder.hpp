#pragma once

#include <cstddef>
#include <utility>

#include "libtarn/util/XmlCheck.hpp"

namespace libtarn {
namespace util {
namespace xml {

inline bool isEndTagKind(XmlFault::Kind kind) {
  using Kind = XmlFault::Kind;
  return kind == Kind::EndTagMismatched || kind == Kind::EndTagMissing ||
         kind == Kind::EndTagWithoutStart;
}

/// The faults so far. In the order in which they are reported, which is that of their offsets.
class Recorder {
 public:
  enum class Records { Everything, EndTags };

  Recorder(Records records, std::size_t limit) : records_(records), limit_(limit) {}

  /// `describe` fills in the words of a fault that is listed.
  template <class Describe>
  void report(XmlFault::Kind kind, std::size_t offset, Describe describe) {
    if (records_ == Records::EndTags && !isEndTagKind(kind)) return;
    ++faults_.count;
    if (faults_.list.size() >= limit_) return;
    faults_.list.emplace_back();
    XmlFault& fault = faults_.list.back();
    fault.kind = kind;
    fault.offset = offset;
    describe(fault);
  }

  XmlFaults take() { return std::move(faults_); }

 private:
  Records records_;
  std::size_t limit_;
  XmlFaults faults_;
};

}  // namespace xml
}  // namespace util
}  // namespace libtarn
