// Included by other headers; not for hosts. See hostMacrosOff.hpp.

#pragma pop_macro("DEBUG")
#pragma pop_macro("ERROR")
#pragma pop_macro("INFO")
#pragma pop_macro("WARNING")
#pragma pop_macro("CREATE")
#pragma pop_macro("DELETE")
#pragma pop_macro("UPDATE")
#pragma pop_macro("AUTO")
#pragma pop_macro("ACTUAL")
#pragma pop_macro("PLAN")
#pragma pop_macro("DEFAULTS")
