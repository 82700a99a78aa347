// The version, for the about box, the files' properties and the package's name. Plain macros, since resource scripts
// use them, too.
#ifndef STAIRMELT_RESOURCES_VERSION_NUMBERS_H
#define STAIRMELT_RESOURCES_VERSION_NUMBERS_H

#define VERSION_MAJOR 1
#define VERSION_MINOR 0
#define VERSION_REVISION 2
#define VERSION_BUILD 16
#define VERSION_TEXT "1.0.2"  // the first three

#endif
