#!/usr/bin/env python3
"""What a host compiles when it includes <libtarn/libtarn.hpp>: how many lines, and none of the
headers that only the library needs.

size_test.py INCLUDE_FOLDER COMPILER [FLAG...]
"""

import re
import subprocess
import sys
import unittest

# Lines without markers and blanks. <string>, <vector>, <list> and <memory>, which the declarations
# need, have 26,500 of them with g++ 12.
MOST_LINES = 30000

# By the end of their path.
FORBIDDEN = re.compile(
    r"/boost/|mmintrin\.h$|arm_neon\.h$|/rapidxml/(parser|printer|scan|character_classes)\.hpp$|"
    r"/(sstream|istream|ostream|iostream|map|set|deque|unordered_map|functional|algorithm|regex)$")

INCLUDE_FOLDER, *COMPILER = sys.argv[1:]


def preprocessed(header, *flags):
    run = subprocess.run([*COMPILER, "-std=c++17", "-E", "-x", "c++", f"-I{INCLUDE_FOLDER}", *flags, "-"],
                         input=f"#include <libtarn/{header}>\n", check=True, capture_output=True, text=True)
    return run.stdout.splitlines()


class HeaderSize(unittest.TestCase):
    def test_everything_for_a_host_is_small(self):
        lines = preprocessed("libtarn.hpp", "-P")
        self.assertGreater(len(lines), 1000)
        self.assertLess(len(lines), MOST_LINES)

    def test_headers_that_only_the_library_needs_are_absent(self):
        for header in ["libtarn.hpp", "rapidxml/rapidxml.hpp", "rapidxml/rapidxml_print.hpp"]:
            markers = {line.split('"')[1] for line in preprocessed(header) if re.match(r'# \d+ "/', line)}
            self.assertGreater(len(markers), 10)
            self.assertEqual([], sorted(path for path in markers if FORBIDDEN.search(path)), header)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
