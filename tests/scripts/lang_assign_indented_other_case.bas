DIM x
  X =  1