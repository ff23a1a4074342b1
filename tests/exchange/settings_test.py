"""Settings files that the connector refuses."""

import unittest

from exchange import SECRET, Case


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

    def test_more_severities_than_there_are(self):
        path = self.settings(lambda settings: settings.update(subscriptions={str(i): [] for i in range(5)}))
        self.assert_refused(self.run_exchange("--settings", path),
                            "exchange: connector: VynSubscriptionsWithHash: subscriptions.entries: 5 items, at most 4")


if __name__ == "__main__":
    unittest.main()
