// The command `tarn`: a host of the library that works on documents in files.

#include <clocale>
#include <exception>

#include "CommandError.hpp"
#include "CommandLine.hpp"
#include "HostLog.hpp"
#include "outputFile.hpp"
#include "terminal.hpp"

namespace {

// What a shell tells of a program that ends by SIGPIPE, as this one does unless that is ignored.
constexpr int OUTPUT_CLOSED = 141;

int runAndTell(int argc, char** argv) {
  using tarn::Status;
  Status status = Status::FileError;
  try {
    status = tarn::CommandLine().run(argc, argv);
  } catch (const tarn::CommandError& error) {
    tarn::tellError(error.what());
    status = error.status();
  } catch (const tarn::OutputClosed&) {
    return OUTPUT_CLOSED;
  } catch (const std::bad_alloc&) {
    tarn::tellError(tarn::errorLine("tarn", "not enough memory"));
  } catch (const std::exception& error) {
    tarn::tellError(tarn::errorLine("tarn", error.what()));
  }
  return static_cast<int>(status);
}

}  // namespace

int main(int argc, char** argv) {
  // For the width of characters; documents are in UTF-8 wherever the user is.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  const int status = runAndTell(argc, argv);
  tarn::HostLog::flush();
  return status;
}
