DIM abc
abc
