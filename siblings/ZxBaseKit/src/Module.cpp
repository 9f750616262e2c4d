#include <ZxBaseKit/Module.h>

#include <ZxBaseKit/ModuleCount.h>

static zx::TModuleCount s_Users;

void Init_ZxBaseKit() { s_Users.Open(); }

void Deinit_ZxBaseKit() { s_Users.Close(); }
