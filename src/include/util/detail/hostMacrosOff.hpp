// Included by other headers; not for hosts.
//
// Hosts and their platforms define macros with the names of constants. This header undefines those
// macros until hostMacrosOn.hpp, which restores them. It has no include guard: each header of the
// library that declares such a constant includes both.

#pragma push_macro("DEBUG")
#undef DEBUG
#pragma push_macro("ERROR")
#undef ERROR
#pragma push_macro("INFO")
#undef INFO
#pragma push_macro("WARNING")
#undef WARNING
#pragma push_macro("CREATE")
#undef CREATE
#pragma push_macro("DELETE")
#undef DELETE
#pragma push_macro("UPDATE")
#undef UPDATE
#pragma push_macro("AUTO")
#undef AUTO
#pragma push_macro("ACTUAL")
#undef ACTUAL
#pragma push_macro("PLAN")
#undef PLAN
#pragma push_macro("DEFAULTS")
#undef DEFAULTS
