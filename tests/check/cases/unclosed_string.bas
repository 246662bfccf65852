a = "abc
