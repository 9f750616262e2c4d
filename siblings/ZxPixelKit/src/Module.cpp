#include <ZxPixelKit/Module.h>

#include <ZxBaseKit/ModuleCount.h>

static zx::TModuleCount s_Users;

void Init_ZxPixelKit() { s_Users.Open(); }

void Deinit_ZxPixelKit() { s_Users.Close(); }
