a =
