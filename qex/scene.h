#ifndef QEX_SCENE_H
#define QEX_SCENE_H

/// \file
/// The scene: nodes, takes, curves, evaluation. Includes all public headers of qex::scene and of what it uses.

#include <qexscene/kfcurveglobals.h>
#include <qexscene/kqexanimcurve.h>
#include <qexscene/kqexanimcurvefilter.h>
#include <qexscene/kqexanimcurvefilterconstantkeyreducer.h>
#include <qexscene/kqexanimcurvefiltergimblekiller.h>
#include <qexscene/kqexanimcurvefilterunroll.h>
#include <qexscene/kqexanimcurvekey.h>
#include <qexscene/kqexanimcurvenode.h>
#include <qexscene/kqexanimevaluator.h>
#include <qexscene/kqexanimlayer.h>
#include <qexscene/kqexanimstack.h>
#include <qexscene/kqexbonedof.h>
#include <qexscene/kqexchannel.h>
#include <qexscene/kqexclassid.h>
#include <qexscene/kqexcollection.h>
#include <qexscene/kqexconnection.h>
#include <qexscene/kqexdoftrack.h>
#include <qexscene/kqexframe.h>
#include <qexscene/kqexframesink.h>
#include <qexscene/kqexglobaltransforms.h>
#include <qexscene/kqexindexedlist.h>
#include <qexscene/kqexkeyblock.h>
#include <qexscene/kqexkeystore.h>
#include <qexscene/kqexkeytimes.h>
#include <qexscene/kqexkeyvalues.h>
#include <qexscene/kqexlimits.h>
#include <qexscene/kqexlist.h>
#include <qexscene/kqexmatrix.h>
#include <qexscene/kqexnode.h>
#include <qexscene/kqexnodeattribute.h>
#include <qexscene/kqexnodelimits.h>
#include <qexscene/kqexnodepose.h>
#include <qexscene/kqexobject.h>
#include <qexscene/kqexproperty.h>
#include <qexscene/kqexquaternion.h>
#include <qexscene/kqexsampling.h>
#include <qexscene/kqexscene.h>
#include <qexscene/kqexsceneundo.h>
#include <qexscene/kqexskeleton.h>
#include <qexscene/kqextype.h>
#include <qexscene/kqexvector4.h>
#include <qexscene/kqexvectortemplate3.h>

#include <qex/kbase.h>
#include <qex/kmath.h>

#endif
