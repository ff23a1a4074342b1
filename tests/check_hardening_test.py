#!/usr/bin/env python3
"""Whether check_hardening.py notices each protection that is left out: builds a small library with all of them, and one
without each: check_hardening_test.py COMPILER READELF"""
import pathlib
import platform
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("check_hardening.py")
SOURCE = """
#include <cstring>
#include <string>
extern char text[16];
char text[16];
void Keep(char*);
void Keep(char* bytes) { std::strcpy(text, bytes); }
void Read(const char* from, std::size_t size);
void Read(const char* from, std::size_t size)
{
    char bytes[64];
    std::memcpy(bytes, from, size);
    Keep(bytes);
}
extern const std::string constant;
const std::string constant = "x";
"""
COMPILE = ["-O2", "-fPIC", "-fstack-protector", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2"]
LINK = ["-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack"]
if platform.machine() == "x86_64":
    COMPILE.append("-fcf-protection=return")
    LINK.append("-Wl,-z,shstk")


def said(*, without=(), extra=(), source=SOURCE, kind="-shared"):
    with tempfile.TemporaryDirectory() as folder:
        library, built = f"{folder}/library.so", f"{folder}/library.o"
        compile_flags = [flag for flag in COMPILE if flag not in without]
        link_flags = [flag for flag in LINK if flag not in without]
        subprocess.run([COMPILER, "-x", "c++", "-c", "-", "-o", built, *compile_flags], input=source, text=True,
                       check=True)
        subprocess.run([COMPILER, kind, built, "-o", library, *link_flags, *extra], check=True)
        result = subprocess.run([sys.executable, CHECK, "--readelf", READELF, "--fortified", library, built],
                                stdout=subprocess.PIPE, text=True, check=False)
        output = result.stdout.replace(folder, "")
        assert result.returncode == (1 if output else 0)
        return output


class CheckHardening(unittest.TestCase):
    def test_is_content_with_a_library_that_has_everything(self):
        self.assertEqual(said(), "")

    def test_is_content_with_a_program_that_has_everything(self):
        self.assertEqual(said(source=SOURCE + "int main() {}", kind="-pie"), "")

    def test_notices_a_program_that_is_always_loaded_at_the_same_address(self):
        self.assertEqual(said(source=SOURCE + "int main() {}", kind="-no-pie"),
                         "the program is always loaded at the same address (its type is not DYN)\n")

    def test_notices_addresses_that_stay_writable(self):
        self.assertEqual(said(without=["-Wl,-z,relro"], extra=["-Wl,-z,norelro"]),
                         "the addresses that the loader fills in stay writable (no GNU_RELRO)\n")

    def test_notices_functions_that_are_looked_up_late(self):
        self.assertEqual(said(without=["-Wl,-z,now"], extra=["-Wl,-z,lazy"]),
                         "functions are looked up at their first call (neither BIND_NOW nor NOW)\n")

    def test_notices_an_executable_stack(self):
        self.assertEqual(said(without=["-Wl,-z,noexecstack"], extra=["-Wl,-z,execstack"]),
                         "the stack may be executable (no GNU_STACK without E)\n")

    def test_notices_a_segment_that_is_writable_and_executable(self):
        both = 'asm(".section .both, \\"awx\\"\\n.byte 0\\n.text");'
        self.assertEqual(said(source=SOURCE + both), "a segment is writable and executable\n")

    def test_notices_that_no_stack_has_a_guard(self):
        self.assertEqual(said(without=["-fstack-protector"]),
                         "no function has a guard on the stack (__stack_chk_fail is not imported)\n")

    def test_notices_that_no_copy_is_checked(self):
        self.assertEqual(said(without=["-D_FORTIFY_SOURCE=2"]),
                         "no copy checks the room that it has (no function that ends in _chk is imported)\n")

    @unittest.skipUnless(platform.machine() == "x86_64", "x86-64 alone has shadow stacks")
    def test_notices_returns_without_protection(self):
        self.assertEqual(said(without=["-Wl,-z,shstk"]),
                         "returns are not protected (no SHSTK among the x86 features)\n")
        self.assertEqual(said(without=["-fcf-protection=return"]), "returns or jumps are not protected in /library.o (no SHSTK)\n")


if __name__ == "__main__":
    COMPILER, READELF = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
