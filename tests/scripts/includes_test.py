#!/usr/bin/env python3
"""Plants includes in a copy of the sources and expects scripts/includes to find each of them.

The working folder is the repository's root.
"""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = Path("scripts/includes").resolve()

# A file, an include, and the fault.
FAULTS = [
    ("src/cli/commands/get.cpp", '"libtarn/model/ScalarImp.hpp"',
     "commands may not include src/include/model/ScalarImp.hpp"),
    ("src/cli/main.cpp", '"libtarn/libtarn.hpp"',
     "command-line may not include src/include/libtarn.hpp"),
    ("src/cli/commands/list.cpp", '<libtarn/model/TarnDomElement.hpp>',
     "commands may not include src/include/model/TarnDomElement.hpp"),
    ("src/cli/commands/tree.cpp", "<CLI/CLI.hpp>", "<CLI/CLI.hpp> is not for this file"),
    ("src/cli/files/gzip.cpp", '"documents/Selection.hpp"',
     "files may not include src/cli/documents/Selection.hpp"),
    ("src/include/model/List.hpp", '"libtarn/model/LibTarnDocument.hpp"',
     "interfaces may not include src/include/model/LibTarnDocument.hpp"),
    ("src/libTARN/model/indexation/EntryTree.hpp", '"../UndoLog.hpp"',
     "indexes may not include src/libTARN/model/UndoLog.hpp"),
    ("src/libTARN/model/UndoLog.cpp", '"libtarn/editor/TarnMerge.hpp"',
     "model may not include src/include/editor/TarnMerge.hpp"),
    ("DomXML/Source/DomElement.cpp", '"libtarn/util/Logger.hpp"',
     "dom may not include src/include/util/Logger.hpp"),
    ("DomXML/Include/TarnApi.hpp", '"libtarn/rapidxml/rapidxml.hpp"',
     "base may not include DomXML/Include/rapidxml/rapidxml.hpp"),
    ("DomXML/Source/DomElement.cpp", "<yaml/yaml.hpp>",
     "<yaml/yaml.hpp> is of a library that no file may include"),
    ("src/cli/main.cpp", '"nowhere.hpp"', '"nowhere.hpp" leads to no file'),
]


class IncludesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for name in ("DomXML", "src"):
            shutil.copytree(name, self.root / name)

    def found(self):
        result = subprocess.run([CHECK, self.root], stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual(result.returncode, 1 if result.stderr else 0)
        return result.stderr.splitlines()

    def test_the_sources_are_as_the_table_says(self):
        self.assertEqual(self.found(), [])

    def test_an_include_from_elsewhere_is_found(self):
        for path, include, message in FAULTS:
            with self.subTest(path=path, include=include):
                file = self.root / path
                text = file.read_text(encoding="utf-8")
                file.write_text(f"{text}\n#include {include}\n", encoding="utf-8")
                self.assertEqual(self.found(), [f"{path}: {message}"])
                file.write_text(text, encoding="utf-8")

    def test_an_exception_that_nothing_needs_is_found(self):
        path = "src/libTARN/model/indexation/keyExtractors.cpp"
        file = self.root / path
        text = file.read_text(encoding="utf-8")
        without = text.replace('#include "libtarn/model/List.hpp"', "")
        self.assertNotEqual(without, text)
        file.write_text(without, encoding="utf-8")
        self.assertEqual(self.found(),
                         [f"{path}: needs no exception for src/include/model/List.hpp"])

    def test_a_file_outside_of_all_rooms_is_found(self):
        (self.root / "src" / "new.cpp").write_text("", encoding="utf-8")
        self.assertEqual(self.found(), ["src/new.cpp: is in no room"])

    def test_a_mark_where_hosts_include_by_name_is_found(self):
        for path in ["src/include/model/Log.hpp", "DomXML/Include/OutOfMemory.hpp"]:
            file = self.root / path
            text = file.read_text(encoding="utf-8")
            file.write_text(f"// Included by other headers; not for hosts.\n{text}", encoding="utf-8")
            self.assertEqual(self.found(), [f"{path}: is marked as not for hosts"])
            file.write_text(text, encoding="utf-8")

    def test_a_node_class_without_a_mark_is_found(self):
        path = "src/include/model/ScalarImp.hpp"
        file = self.root / path
        file.write_text(file.read_text(encoding="utf-8").partition("\n")[2], encoding="utf-8")
        self.assertEqual(self.found(), [f"{path}: a node class, is to say so at its first line"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
