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

// The status that a shell reports for a program that SIGPIPE ended.
constexpr int OUTPUT_CLOSED = 141;

// Reports std::bad_alloc that leaves a noexcept function of another library, or that is thrown
// before main().
[[noreturn]] void endWithoutMemory() {
  if (const std::exception_ptr current = std::current_exception()) {
    try {
      std::rethrow_exception(current);
    } catch (const std::bad_alloc&) {
      tarn::reportNoMemory("tarn");
      std::_Exit(static_cast<int>(tarn::Status::FileError));
    } catch (...) {  // NOLINT(bugprone-empty-catch): ends as it would have
    }
  }
  std::abort();
}

// When standard output is closed, the next file that is opened would get its number, and the output
// of the command would be written into that file.
void reserveStandardDescriptors() {
  int descriptor = -1;
  do {
    descriptor = ::open("/", O_PATH | O_CLOEXEC);  // can be neither read nor written
  } while (descriptor >= 0 && descriptor < STDERR_FILENO);
  if (descriptor > STDERR_FILENO) ::close(descriptor);
}

int runAndReport(int argc, char** argv) {
  using tarn::Status;
  Status status = Status::FileError;
  try {
    status = tarn::CommandLine().run(argc, argv);
  } catch (const tarn::CommandError& error) {
    tarn::reportError(error.what());
    status = error.status();
  } catch (const tarn::OutputClosed&) {
    return OUTPUT_CLOSED;
  } catch (const std::bad_alloc&) {
    tarn::reportNoMemory("tarn");
  } catch (const std::length_error&) {  // more than could be addressed
    tarn::reportNoMemory("tarn");
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::not_enough_memory) {
      tarn::reportNoMemory("tarn");
    } else {
      tarn::reportError(tarn::errorLine("tarn", error.what()));
    }
  } catch (const std::exception& error) {
    tarn::reportError(tarn::errorLine("tarn", error.what()));
  }
  return static_cast<int>(status);
}

void setTerminate() { std::set_terminate(endWithoutMemory); }

// Runs before the libraries construct their constants, which allocates memory, too.
[[gnu::section(".preinit_array"), gnu::used]] void (*const setTerminateFirst)() = setTerminate;

}  // namespace

int main(int argc, char** argv) {
  reserveStandardDescriptors();
  // A write beyond the limit of file sizes then fails like one to a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  // For the width of characters: documents are in UTF-8 in every locale.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  const int status = runAndReport(argc, argv);
  tarn::HostLog::flush();
  return status;
}
