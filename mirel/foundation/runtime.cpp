#include "mirel/foundation/runtime.h"

#include <cstdlib>

namespace {
thread_local MirelTLSStruct t_record = {EC24(0, 0, 0)};
constexpr float kPi = 3.14159265358979323846f;
}  // namespace

MirelTLSStruct* EGetTLSPtr() { return &t_record; }

void* Talmeer_Malloc(std::size_t bytes) { return std::malloc(bytes == 0 ? 1 : bytes); }
void Talmeer_Free(void* block) { std::free(block); }

float EToRadians(float degrees) { return degrees * (kPi / 180.0f); }
float EFromRadians(float radians) { return radians * (180.0f / kPi); }
