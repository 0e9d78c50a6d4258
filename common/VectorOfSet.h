// A vector of kWide doubles, for the loops that common/EachInstructionSet.h compiles, which
// includes this before them.

using Part = double __attribute__((vector_size(8 * kWide)));

inline Part Load(const double* from) {
  Part part;
  std::memcpy(&part, from, sizeof part);
  return part;
}

template <class Vector, class Place>
inline Vector Gather(const double* from, const Place* at) {
  if constexpr (sizeof(Vector) == 16) {
    return Vector{from[at[0]], from[at[1]]};
  } else if constexpr (sizeof(Vector) == 32) {
    return Vector{from[at[0]], from[at[1]], from[at[2]], from[at[3]]};
  } else {
    return Vector{from[at[0]], from[at[1]], from[at[2]], from[at[3]],
                  from[at[4]], from[at[5]], from[at[6]], from[at[7]]};
  }
}
