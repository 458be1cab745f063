// The comparison of binary interfaces follows the exported functions to the records. It does not look into lists, so
// that records that the library passes in lists only get a function here.

#include <Pardel/pardel.h>

Q_DECL_EXPORT void recordsInLists(const AccessRightsStructure*, const Setting*);

void recordsInLists(const AccessRightsStructure*, const Setting*) {}
