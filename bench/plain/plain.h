// Plain loops for the benchmarks, compiled once per tier with that tier's
// flags. PLAIN(name) spells the tier's name, plain_<tier>_<name>.
#pragma once

#if defined(ORV_TIER_M7)
#define PLAIN(name) plain_m7_##name
#elif defined(ORV_TIER_U8)
#define PLAIN(name) plain_u8_##name
#elif defined(ORV_TIER_N8)
#define PLAIN(name) plain_n8_##name
#elif defined(ORV_TIER_Y8)
#define PLAIN(name) plain_y8_##name
#else
#define PLAIN(name) plain_e9_##name
#endif
