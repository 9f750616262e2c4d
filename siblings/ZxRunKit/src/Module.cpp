#include <ZxRunKit/Module.h>

#include <ZxBaseKit/ModuleCount.h>

static zx::TModuleCount s_Users;

void Init_ZxRunKit() { s_Users.Open(); }

void Deinit_ZxRunKit() { s_Users.Close(); }
