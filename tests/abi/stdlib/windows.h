// What Microsoft's header does to those behind it: MinGW's leaves out min and max.
#pragma once

#if !defined(NOMINMAX)
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define min(a, b) (((a) < (b)) ? (a) : (b))
#endif

#define CALLBACK __stdcall
#define ERROR 0
#define GetMessage GetMessageW
#define GetObject GetObjectW
#define GetUserName GetUserNameW
#define IN
#define OUT
#define far
#define interface struct
#define near
#define small char
