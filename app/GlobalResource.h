#pragma once

#include <QObject>

// Base of the process-wide services: created lazily on first request and handed out through
// shared pointers, so holders never outlive what they hold.
class GlobalResource : public QObject
{
    Q_OBJECT

public:
    explicit GlobalResource(QObject* parent = nullptr);
    ~GlobalResource() override;
};
