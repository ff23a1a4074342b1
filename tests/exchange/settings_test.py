"""Settings files that the connector refuses."""

import json
import os
import resource
import unittest

from exchange import MIB, SECRET, SETTINGS, Case


class BadSettings(Case):
    def refused(self, change, problem):
        path = self.settings(change)
        self.assert_refused(self.run_exchange("--settings", path), f"exchange: connector: {path}: {problem}")

    def test_no_such_file(self):
        self.assert_refused(self.run_exchange("--settings", self.path("none")),
                            f"exchange: connector: {self.path('none')}: No such file or directory")

    def test_a_directory(self):
        self.assert_refused(self.run_exchange("--settings", self.directory),
                            f"exchange: connector: {self.directory}: Is a directory")

    def test_broken_json_is_not_quoted(self):
        path = self.write("broken", f'{{"password": "{SECRET}')
        self.assert_refused(self.run_exchange("--settings", path),
                            f"exchange: connector: {path}: not JSON: syntax error at byte 24")

    def test_a_missing_value(self):
        self.refused(lambda settings: settings["tls"].pop("ciphers"), "/tls/ciphers: missing")

    def test_a_value_of_another_type(self):
        self.refused(lambda settings: settings["credentials"].update(password=[SECRET]),
                     "/credentials/password: not a string")
        self.refused(lambda settings: settings.update(parameters=3), "/parameters: not an object")
        self.refused(lambda settings: settings["subscriptions"].update({"1": "x"}),
                     "/subscriptions/1: not a list of names")

    def test_a_number_out_of_range(self):
        for number in 65536, -1, 1.5, "1":
            self.refused(lambda settings, number=number: settings["tls"].update(minimumVersion=number),
                         "/tls/minimumVersion: not a whole number from 0 to 65535")

    def test_a_severity_that_does_not_exist(self):
        for key in "4", "-1", "01", "high", "", "3 ":
            self.refused(lambda settings, key=key: settings.update(subscriptions={"0": [], key: ["Alarm"]}),
                         f"/subscriptions/{key}: not a severity from 0 to 3")

    def test_a_file_without_end(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (64 * MIB, 64 * MIB))
        result = self.run_exchange("--settings", "/dev/zero", preexec=None if "SANITIZED" in os.environ else limit)
        self.assert_refused(result, "exchange: connector: /dev/zero: over 4 MiB")

    def test_the_largest_file(self):
        text = json.dumps(SETTINGS)
        path = self.write("large", text.ljust(4 * MIB))
        self.run_well("--settings", path, "--record", "connection")
        path = self.write("large", text.ljust(4 * MIB + 1))
        self.assert_refused(self.run_exchange("--settings", path), f"exchange: connector: {path}: over 4 MiB")

    def test_values_nested_without_end(self):
        for depth, problem in (64, None), (65, "nested deeper than 64"), (1000000, "nested deeper than 64"):
            path = self.write("deep", json.dumps(SETTINGS)[:-1] + ', "x": ' + "[" * depth + "]" * depth + "}")
            result = self.run_exchange("--settings", path, "--record", "connection")
            expected = "" if problem is None else f"exchange: connector: {path}: {problem}\n"
            self.assertEqual(result.stderr, expected, depth)


class ManyParameters(Case):
    def seconds(self, count):
        """Of the processor, which other programs take no part of."""
        path = self.settings(lambda settings: settings.update(parameters={f"name {i}": "value" for i in range(count)}))
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.run_well("--settings", path, "--record", "connection", "--json")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime - before.ru_utime

    def test_four_times_as_many_take_about_four_times_as_long(self):
        self.assertLess(self.seconds(40000), 9 * self.seconds(10000))


if __name__ == "__main__":
    unittest.main()
