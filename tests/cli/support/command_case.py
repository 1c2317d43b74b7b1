"""Code that the tests of the command share. The command is the argument of the test script."""

import os
import subprocess
import sys
import tempfile
import unittest

TARN = sys.argv[1]
EXAMPLES = "examples"


def run(*arguments, **options):
    return subprocess.run(arguments, stdout=options.pop("stdout", subprocess.PIPE),
                          stderr=subprocess.PIPE, check=False, **options)


def tarn(*arguments, **options):
    return run(TARN, *arguments, **options)


def has_zlib(command):
    """Returns true if the command, a native program, reads and writes compressed files."""
    return b"libz.so" in subprocess.run(["ldd", command], stdout=subprocess.PIPE,
                                        check=False).stdout


def document(body, header="<header/>", kind="plan"):
    """A document whose cmData holds a header and `body`, in another form than the printed one."""
    return (f'<tarn xmlns="tarn21.xsd" version="2.1"><cmData type="{kind}">{header}{body}'
            "</cmData></tarn>")


def managed_object(name, operation="", body="", class_name="C"):
    return (f'<managedObject class="{class_name}" distName="{name}"'
            + (f' operation="{operation}"' if operation else "") + f">{body}</managedObject>")


class CommandCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def file(self, text, name="document.xml"):
        path = self.path(name)
        with open(path, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return path

    def read(self, path):
        with open(path, "rb") as file:
            return file.read()

    def expect(self, result, status, out=b"", err=b""):
        def to_bytes(text):
            return text if isinstance(text, bytes) else text.encode()
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (status, to_bytes(out), to_bytes(err)))


def main():
    unittest.main(argv=sys.argv[:1])
