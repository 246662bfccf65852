DIM ' nothing
