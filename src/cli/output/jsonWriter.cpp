#include "output/FindingWriter.hpp"
#include "output/json.hpp"
#include "output/outputFile.hpp"

namespace tarn {

namespace {

Json orNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

void addPlace(Json& json, const std::optional<FaultPlace>& place) {
  json["line"] = place ? Json(place->position.line) : Json(nullptr);
  json["column"] = place ? Json(place->position.column) : Json(nullptr);
}

Json jsonOf(const Fault& fault) {
  Json json = {{"message", orNull(fault.message)}};
  addPlace(json, fault.place);
  json["path"] = orNull(fault.path);
  json["dn"] = orNull(fault.distName);
  json["rule"] = orNull(fault.rule);
  if (!fault.note.empty()) {
    json["note"] = {{"message", fault.note}};
    addPlace(json["note"], fault.notePlace);
  }
  return json;
}

// The first fault, or why there is none to be had.
Json firstOf(const Finding& finding) {
  if (!finding.faults.empty()) return jsonOf(finding.faults.front());
  Fault none;
  none.message = finding.failure();
  return jsonOf(none);
}

class JsonWriter : public FindingWriter {
 public:
  explicit JsonWriter(bool listsFaults) : listsFaults_(listsFaults) {}

  void add(const std::string& path, const Finding& finding) override {
    Json json = {{"file", path}, {"result", static_cast<int>(finding.status)}};
    json.update(firstOf(finding));
    if (listsFaults_) {
      json["violationCount"] = finding.faultCount;
      json["violations"] = Json::array();
      for (const Fault& fault : finding.faults) json["violations"].push_back(jsonOf(fault));
    }
    writeOutput(jsonText(json) + "\n");
  }

 private:
  bool listsFaults_;
};

}  // namespace

std::unique_ptr<FindingWriter> makeJsonWriter(bool listsFaults) {
  return std::make_unique<JsonWriter>(listsFaults);
}

}  // namespace tarn
