// The members that the walk knows, one on a line: for check_members.py.

#include <iostream>

#include "api/MemberWalk.h"
#include "framework/HostProgram.h"

HOST_PROGRAM(ListMembers)
{
    for (MemberWalk::Member const& member : MemberWalk::AllMembers())
        std::cout << member.name << '\n';
}
