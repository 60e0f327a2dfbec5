#pragma once

#include <QString>
#include <QtGlobal>

/// A monitor's number that survives restarts and replugging: FNV-1a of its maker, model and serial
/// from the EDID, or of its connector name when it reports no serial. Never its place in a list.
quint32 displayNumber(const QString& manufacturer, const QString& model, const QString& serial,
                      const QString& name);
