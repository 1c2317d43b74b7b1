// Documents on several threads at once, one on each, with one log.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "support/CapturedLog.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"

namespace {
using tarn_test::documentTextWithLog;

using namespace libtarn::model;

constexpr int THREADS = 8;
constexpr int ROUNDS = 6;
constexpr int OBJECTS = 300;

std::string objects(int from, int to, const char* operation) {
  std::string text;
  for (int i = from; i < to; ++i) {
    const std::string number = std::to_string(i);
    text += "<managedObject class='C' distName='A-" + number + "' operation='" + operation +
            "'><p name='a'>" + number + "</p><list name='l'><p>1</p></list></managedObject>";
  }
  return text;
}

// The printed result, and the number of lines that were logged before.
std::string work(int thread) {
  tarn_test::CapturedLog log;
  LibTarnDocument source;
  if (source.parse(documentTextWithLog(objects(0, OBJECTS, "update")).c_str(), true) != 0)
    return "parse";
  LibTarnDocument refused;
  if (refused.parse("<tarn><", false) != 1) return "refused";
  LibTarnDocument delta;
  delta.parse(
      documentTextWithLog(objects(thread, OBJECTS, "update") + objects(1000, 1100, "create"))
          .c_str(),
      false);
  if (!libtarn::editor::TarnMerge(source).mergeDocument(delta)) return "merge";
  auto& factory = source.getFactory();
  LibTarnManagedObject* const added =
      factory.createLibTarnManagedObject("C", "B-1", LibTarnManagedObject::Operation::CREATE, "1");
  added->addParameter(*factory.createScalar("a", "1"));
  source.getLibTarnCmData()->addLibTarnManagedObject(*added);
  LibTarnManagedObject& mask = libtarn::util::ManagedObjectBuilder(source).setDistName("A-7").get();
  LibTarnManagedObject& values = libtarn::util::ManagedObjectBuilder(source).setVersion("2").get();
  source.setChangesToMOs(mask, values);
  if (source.validate() != 0) return "validate";
  const std::string finding = tarn_test::brokenDocument(source);
  if (!finding.empty()) return finding;
  std::string printed;
  libtarn::util::dumpTarnDocument(source, printed);
  return printed + std::to_string(log.lines().size());
}

TEST(ThreadsTest, EightDocumentsAtOnceAreAsOneAfterTheOther) {
  std::vector<std::string> expected;
  for (int i = 0; i < THREADS; ++i) expected.push_back(work(i));
  std::atomic<int> different{0};
  std::vector<std::thread> threads;
  threads.reserve(THREADS);
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&expected, &different, i] {
      for (int round = 0; round < ROUNDS; ++round) {
        if (work(i) != expected[static_cast<std::size_t>(i)]) ++different;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(different, 0);
  EXPECT_GT(expected.front().size(), 10000U);
}

}  // namespace
