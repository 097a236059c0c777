// Empty until the lead replaces this file with the rename, duplicate, trash and compress actions
// when merging.
#include "app/AppController.h"

void AppController::ctxRename() {}
void AppController::ctxDuplicate() {}
void AppController::ctxTrash() {}
void AppController::ctxCompress() {}
