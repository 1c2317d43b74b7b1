"""Documents, comments, names and messages use the terms of the glossary in docs/architecture.md.

WORDS has words that once stood for such a term, or that hide one, and what to write instead.
"""

import os
import re
import unittest

FOLDERS = ["abi", "bench", "cmake", "docs", "examples", "fuzz", "scripts", "share", "DomXML", "src", "tests"]
FILES = ["CHANGELOG.md", "CMakeLists.txt", "CMakePresets.json", "CONTRIBUTING.md", "README.md",
         "SECURITY.md"]
# Inputs of fuzz targets are bytes, and this file has every word.
SKIPPED_FOLDERS = {"fuzz/corpus"}
SKIPPED_FILES = {"tests/docs/words_test.py"}
SUFFIXES = {"", ".cmake", ".cpp", ".fish", ".hpp", ".html", ".in", ".json", ".md", ".py", ".scd", ".sh",
            ".txt", ".xsd", ".zsh", ".bash"}

WORDS = {
    r"floors?": "layer",
    r"tell|tells|telling|told": "report, show, distinguish",
    r"throwing sink|log sink|sink that throws": "log callback",
    r"lets? out": "export",
    r"borders? of": "ABI boundary",
    r"zero bytes?": "NUL",
    r"zero-terminated": "NUL-terminated",
    r"in a circle|one circle": "cycle",
    r"mend|mends|mended": "fix",
    r"(?:the|a) way of the": "where, data flow, path",
    r"for who": "for developers who, for authors of",
}
PATTERNS = {re.compile(rf"(?<![a-zA-Z]){word}(?![a-zA-Z])".replace(" ", r"[\s/#*_]+"), re.IGNORECASE):
            instead for word, instead in ((f"(?:{word})", instead) for word, instead in WORDS.items())}
# The words of an identifier are separated like those of a sentence.
CAMEL_CASE = re.compile(r"(?<=[a-z0-9])(?=[A-Z])")


def files():
    yield from FILES
    for folder in FOLDERS:
        for path, _, names in os.walk(folder):
            if path in SKIPPED_FOLDERS or any(path.startswith(f"{each}/") for each in SKIPPED_FOLDERS):
                continue
            for name in names:
                file = os.path.join(path, name)
                if os.path.splitext(name)[1] in SUFFIXES and file not in SKIPPED_FILES:
                    yield file


def faults(name, text):
    """What `text` has, with the number of its line."""
    words = CAMEL_CASE.sub("_", text)
    for pattern, instead in PATTERNS.items():
        for match in pattern.finditer(words):
            line = words.count("\n", 0, match.start()) + 1
            yield f"{name}:{line}: '{' '.join(match[0].split())}', write: {instead}"


class WordsTest(unittest.TestCase):
    def test_files_use_the_terms_of_the_glossary(self):
        checked = list(files())
        self.assertGreater(len(checked), 200)
        found = []
        for name in checked:
            found += faults(name, name)
            with open(name, encoding="utf-8") as file:
                found += faults(name, file.read())
        self.assertEqual(found, [])

    def test_words_are_found_in_sentences_names_and_across_lines(self):
        for text in ("It tells why.", "test_it_is_told", "isTold", "ThrowingSinkTest", "lets\n// out", "A zero byte",
                     "zeroByte", "Floors"):
            self.assertEqual(len(list(faults("x", text))), 1, text)
        for text in ("ftell(file)", "intellect", "layer", "a border: 1px", "mending"):
            self.assertEqual(list(faults("x", text)), [], text)


if __name__ == "__main__":
    unittest.main(argv=["words_test"])
