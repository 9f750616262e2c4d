#include <ZxDrawKit/Module.h>

#include <ZxBaseKit/ModuleCount.h>

static zx::TModuleCount s_Users;

void Init_ZxDrawKit() { s_Users.Open(); }

void Deinit_ZxDrawKit() { s_Users.Close(); }
