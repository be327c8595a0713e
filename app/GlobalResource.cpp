#include "GlobalResource.h"

GlobalResource::GlobalResource(QObject* parent)
    : QObject(parent)
{}

GlobalResource::~GlobalResource() = default;
