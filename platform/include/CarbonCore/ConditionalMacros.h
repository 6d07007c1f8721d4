/* Licence: MIT, see LICENSE. */
/* How every framework header declares its functions: C linkage, visible outside the library. */
#ifndef CARBONCORE_CONDITIONALMACROS_H
#define CARBONCORE_CONDITIONALMACROS_H

#ifdef __cplusplus
#define EXTERN_API_BEGIN \
  extern "C" {           \
  _Pragma("GCC visibility push(default)")
#define EXTERN_API_END          \
  _Pragma("GCC visibility pop") \
  }
#else
#define EXTERN_API_BEGIN _Pragma("GCC visibility push(default)")
#define EXTERN_API_END _Pragma("GCC visibility pop")
#endif

#endif
