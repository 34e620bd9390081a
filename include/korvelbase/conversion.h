/*
 * KorvelBase: conversion of surveying quantities (qmConversion_ family).
 */
#ifndef KORVELBASE_CONVERSION_H
#define KORVELBASE_CONVERSION_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/**
 * Azimuth (radians, clockwise from north) to direction (radians, counter-clockwise from east):
 * normalizeAngle(pi/2 - azimuth).  The formula is its own inverse.
 */
KB_API double qmConversion_azimuthToDirection(double azimuth) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_CONVERSION_H */
