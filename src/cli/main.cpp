// The command `tarn`: a host of the library that works on documents in files.

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>

#include "CommandError.hpp"
#include "CommandLine.hpp"
#include "output/HostLog.hpp"
#include "output/outputFile.hpp"
#include "output/terminal.hpp"

namespace {

// What a shell tells of a program that ends by SIGPIPE, as this one does unless that is ignored.
constexpr int OUTPUT_CLOSED = 141;

// For memory that ends in a function of another library that lets no exception out, or before
// main().
[[noreturn]] void endWithoutMemory() {
  if (const std::exception_ptr current = std::current_exception()) {
    try {
      std::rethrow_exception(current);
    } catch (const std::bad_alloc&) {
      tarn::tellNoMemory("tarn");
      std::_Exit(static_cast<int>(tarn::Status::FileError));
    } catch (...) {  // NOLINT(bugprone-empty-catch): ends as it would have
    }
  }
  std::abort();
}

// A file that is opened must not become standard output because that was closed: what is said would
// be written into it.
void reserveStandardDescriptors() {
  int descriptor = -1;
  do {
    descriptor = ::open("/", O_PATH | O_CLOEXEC);  // can be neither read nor written
  } while (descriptor >= 0 && descriptor < STDERR_FILENO);
  if (descriptor > STDERR_FILENO) ::close(descriptor);
}

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
    tarn::tellNoMemory("tarn");
  } catch (const std::length_error&) {  // more than could be addressed
    tarn::tellNoMemory("tarn");
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::not_enough_memory) {
      tarn::tellNoMemory("tarn");
    } else {
      tarn::tellError(tarn::errorLine("tarn", error.what()));
    }
  } catch (const std::exception& error) {
    tarn::tellError(tarn::errorLine("tarn", error.what()));
  }
  return static_cast<int>(status);
}

void setTerminate() { std::set_terminate(endWithoutMemory); }

// Run before the constants of the libraries are made, which takes memory, too.
[[gnu::section(".preinit_array"), gnu::used]] void (*const setTerminateFirst)() = setTerminate;

}  // namespace

int main(int argc, char** argv) {
  reserveStandardDescriptors();
  // So that a write beyond the limit of sizes fails as one to a full disk does.
  std::signal(SIGXFSZ, SIG_IGN);
  // For the width of characters; documents are in UTF-8 wherever the user is.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  const int status = runAndTell(argc, argv);
  tarn::HostLog::flush();
  return status;
}
