// Keeps a library that consists of layers only acceptable to every generator.
