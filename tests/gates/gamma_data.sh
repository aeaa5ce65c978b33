#!/usr/bin/env bash
# gamma_data.sh <python> <generator> <source>: the stored gamma curves are those that their generator
# prints.
source "$(dirname "$0")/common.sh"

"$1" "$2" --check "$3" || refuse "print ${3##*/} anew with ${2##*/}"
