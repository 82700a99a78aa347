// Names, the GUID and four-character codes for the code and the declaration resources. Plain macros, since resource
// scripts use them, too; there a code is a 32-bit number with its first character in the top byte.
#ifndef STAIRMELT_RESOURCES_PLUGIN_IDS_H
#define STAIRMELT_RESOURCES_PLUGIN_IDS_H

// The key of the persistent store, and the scope of the scripting terminology. 36 characters.
#define PLUGIN_GUID "b5db97bc-0172-4ae0-882e-f3b6e9ed0d20"

#define PLUGIN_ENTRY_POINT "PluginMain"  // the exported function
#define PLUGIN_NAME "stairmelt"          // the menu title
#define PLUGIN_CATEGORY "NORVA"          // the submenu

#define PLUGIN_RESOURCE_ID 16000  // of both PIPL and AETE

#define CODE_PLUGIN 0x73746D6CL    // 'stml': scripting class, event and suite
#define KEY_THRESHOLD 0x54687368L  // 'Thsh'
#define KEY_SOFTNESS 0x5366746EL   // 'Sftn'
#define KEY_BIAS 0x42696173L       // 'Bias'
#define KEY_WINDOW_X 0x50445058L   // 'PDPX'
#define KEY_WINDOW_Y 0x50445059L   // 'PDPY'

#endif
