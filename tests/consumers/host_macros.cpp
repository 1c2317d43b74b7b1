// A host, or a header of its platform, defines macros with these names before it includes the
// library's headers. HOST_MACRO is the value of each: nothing, or a number.

#define DEBUG HOST_MACRO
#define ERROR HOST_MACRO
#define INFO HOST_MACRO
#define WARNING HOST_MACRO
#define CREATE HOST_MACRO
#define DELETE HOST_MACRO
#define UPDATE HOST_MACRO
#define AUTO HOST_MACRO
#define ACTUAL HOST_MACRO
#define PLAN HOST_MACRO
#define DEFAULTS HOST_MACRO

#include <libtarn/libtarn.hpp>
#include <libtarn/model/LibTarnCmDataImp.hpp>
#include <libtarn/model/LibTarnManagedObjectImp.hpp>
#include <libtarn/util/Enum.hpp>

#ifndef DEBUG
#error "DEBUG is gone"
#endif
#ifndef ERROR
#error "ERROR is gone"
#endif
#ifndef INFO
#error "INFO is gone"
#endif
#ifndef WARNING
#error "WARNING is gone"
#endif
#ifndef CREATE
#error "CREATE is gone"
#endif
#ifndef DELETE
#error "DELETE is gone"
#endif
#ifndef UPDATE
#error "UPDATE is gone"
#endif
#ifndef AUTO
#error "AUTO is gone"
#endif
#ifndef ACTUAL
#error "ACTUAL is gone"
#endif
#ifndef PLAN
#error "PLAN is gone"
#endif
#ifndef DEFAULTS
#error "DEFAULTS is gone"
#endif

// The macros have their values again.
#define TEXT_OF_(...) #__VA_ARGS__
#define TEXT_OF(...) TEXT_OF_(__VA_ARGS__)
static_assert(sizeof(TEXT_OF(DELETE)) == sizeof(TEXT_OF(HOST_MACRO)), "DELETE is the host's");
static_assert(sizeof(TEXT_OF(ERROR)) == sizeof(TEXT_OF(HOST_MACRO)), "ERROR is the host's");

#undef UPDATE

bool isUpdated(const libtarn::model::LibTarnManagedObject& object) {
  return object.getOperation() == libtarn::model::LibTarnManagedObject::Operation::UPDATE;
}
