#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn {

/// When output is coloured. Auto: on a terminal that can do it, unless the variable NO_COLOR is
/// set.
enum class ColorChoice { Auto, Always, Never };

enum class Style { Bold, Good, Bad, Faint };

/// True if the open file `descriptor` is a terminal that obeys control sequences: the variable TERM
/// is neither empty nor "dumb".
bool isCapableTerminal(int descriptor);

/// Set before the first output.
void setColorChoice(ColorChoice choice);

/// Returns `text` in that style for standard output, or unchanged without colours.
std::string styled(Style style, const std::string& text);

/// Writes lines to standard error.
void writeMessage(std::string_view lines);
/// Writes the line of an error to standard error, with the word "error:" in colour if there is
/// memory for that.
void reportError(std::string_view line);
/// Writes "SUBJECT: error: not enough memory". Allocates no memory.
void reportNoMemory(const char* subject);

/// Writes a note to standard error: "SUBJECT: note: MESSAGE".
void reportNote(const std::string& subject, const std::string& message);

/// Asks a question on standard error and returns whether the answer is yes. Returns true without
/// asking when standard input or standard error is no terminal.
bool confirms(const std::string& question);

}  // namespace tarn
