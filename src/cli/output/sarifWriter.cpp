// SARIF 2.1.0, an OASIS standard for the results of analysis tools.
//
// The document is written as the files are checked. Its members have no order, so the run begins
// with what is known in advance; what is known at the end, the invocation, comes last.

#include <fmt/format.h>

#include <map>
#include <string_view>

#include "output/FindingWriter.hpp"
#include "output/json.hpp"
#include "output/outputFile.hpp"

namespace tarn {

namespace {

constexpr const char* SCHEMA =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";
constexpr const char* UNREADABLE_FILE = "unreadable-file";
constexpr const char* LEFT_OUT = "left-out";

bool isVerbatimInUri(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~/").find(c) != std::string_view::npos;
}

// A relative path is a relative reference, so that it is the same on every machine.
std::string uriOf(const std::string& path) {
  std::string uri = path.rfind('/', 0) == 0 ? "file://" : "";
  for (const char c : path) {
    if (isVerbatimInUri(c)) {
      uri += c;
    } else {
      uri += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return uri;
}

Json textMessage(const std::string& text) { return {{"text", text}}; }

Json physicalLocation(const std::string& path, const std::optional<FaultPlace>& place) {
  Json location = {{"artifactLocation", {{"uri", uriOf(path)}}}};
  if (place) {
    Json& region = location["region"];
    region["startLine"] = place->position.line;
    if (place->unicodeColumn > 0) region["startColumn"] = place->unicodeColumn;
  }
  return location;
}

Json locationOf(const std::string& path, const Fault& fault) {
  Json location = {{"physicalLocation", physicalLocation(path, fault.place)}};
  if (!fault.distName.empty()) {
    location["logicalLocations"] = {{{"fullyQualifiedName", fault.distName}, {"kind", "object"}}};
  }
  return location;
}

Json descriptorOf(const char* id, const char* description) {
  return {{"id", id}, {"shortDescription", textMessage(description)}};
}

class SarifWriter : public FindingWriter {
 public:
  explicit SarifWriter(const std::vector<Rule>& rules) {
    Json driver = {{"name", "tarn"}, {"version", TARN_VERSION}, {"rules", Json::array()}};
    for (const Rule& rule : rules) {
      ruleIndexes_.emplace(rule.id, ruleIndexes_.size());
      driver["rules"].push_back(descriptorOf(rule.id, rule.description));
    }
    driver["notifications"] = {
        descriptorOf(UNREADABLE_FILE, "The file could not be checked"),
        descriptorOf(LEFT_OUT, "There are more faults in the file than are reported")};
    writeOutput(fmt::format(
        R"({{"$schema":"{}","version":"2.1.0","runs":[{{"tool":{},"columnKind":"utf16CodeUnits",)"
        R"("results":[)",
        SCHEMA, jsonText({{"driver", driver}})));
  }

  void add(const std::string& path, const Finding& finding) override {
    std::string results;
    const char* separator = hasResult_ ? "," : "";
    for (const Fault& fault : finding.faults) {
      results += separator + ("\n" + jsonText(resultOf(path, fault)));
      separator = ",";
    }
    const std::string failure = finding.failure();
    if (!failure.empty()) addNotification(path, UNREADABLE_FILE, "error", failure);
    if (finding.leftOutCount() > 0) {
      addNotification(path, LEFT_OUT, "warning", leftOutMessage(finding));
    }
    writeOutput(results);
    hasResult_ = hasResult_ || !finding.faults.empty();
  }

  void finish(Status status) override {
    Json invocation = {{"executionSuccessful", status != Status::FileError},
                       {"exitCode", static_cast<int>(status)}};
    if (!notifications_.empty()) invocation["toolExecutionNotifications"] = notifications_;
    writeOutput(fmt::format("],\n\"invocations\":[{}]}}]}}\n", jsonText(invocation)));
  }

 private:
  Json resultOf(const std::string& path, const Fault& fault) const {
    Json result = {{"ruleId", fault.rule},
                   {"ruleIndex", ruleIndexes_.at(fault.rule)},
                   {"level", "error"},
                   {"message", textMessage(fault.message)},
                   {"locations", Json::array({locationOf(path, fault)})}};
    if (!fault.note.empty()) {
      result["relatedLocations"] =
          Json::array({{{"physicalLocation", physicalLocation(path, fault.notePlace)},
                        {"message", textMessage(fault.note)}}});
    }
    return result;
  }

  void addNotification(const std::string& path, const char* id, const char* level,
                       const std::string& message) {
    notifications_.push_back(
        {{"descriptor", {{"id", id}}},
         {"level", level},
         {"message", textMessage(message)},
         {"locations", Json::array({{{"physicalLocation", physicalLocation(path, {})}}})}});
  }

  std::map<std::string_view, std::size_t> ruleIndexes_;
  bool hasResult_ = false;
  Json notifications_ = Json::array();  // one or two for a file that cannot be reported as a whole
};

}  // namespace

std::unique_ptr<FindingWriter> makeSarifWriter(const std::vector<Rule>& rules) {
  return std::make_unique<SarifWriter>(rules);
}

}  // namespace tarn
