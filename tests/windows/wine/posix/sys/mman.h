// What guarded_buffer.cpp asks of POSIX, on Windows.
#pragma once

#include <windows.h>

enum { PROT_NONE = 0, PROT_READ = 1, PROT_WRITE = 2 };
#define MAP_PRIVATE 0
#define MAP_ANONYMOUS 0
#define MAP_FAILED nullptr
#define _SC_PAGESIZE 0

inline long sysconf(int) {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  return static_cast<long>(system.dwPageSize);
}

inline DWORD page_protection(int protection) {
  return (protection & PROT_WRITE) != 0  ? PAGE_READWRITE
         : (protection & PROT_READ) != 0 ? PAGE_READONLY
                                         : PAGE_NOACCESS;
}

inline void *mmap(void *address, size_t size, int protection, int, int, long) {
  return VirtualAlloc(address, size, MEM_RESERVE | MEM_COMMIT, page_protection(protection));
}

inline int mprotect(void *address, size_t size, int protection) {
  DWORD before;
  return VirtualProtect(address, size, page_protection(protection), &before) ? 0 : -1;
}

inline int munmap(void *address, size_t) { return VirtualFree(address, 0, MEM_RELEASE) ? 0 : -1; }
