#include <ZxBaseKit/TZxStream.h>

TZxStream::~TZxStream() = default;

unsigned long TZxStream::Read(void*, unsigned long) { return 0; }

unsigned long TZxStream::Write(const void*, unsigned long) { return 0; }

unsigned long TZxStream::getSize() { return 0; }

bool TZxStream::setSize(unsigned long) { return false; }

unsigned long TZxStream::getPosition() { return 0; }

bool TZxStream::setPosition(unsigned long) { return false; }

TZxStream::operator bool() { return false; }
