; What the installer says, in the languages of the plug-in's own texts.
!macro Text name english spanish french
  LangString ${name} ${LANG_ENGLISH} "${english}"
  LangString ${name} ${LANG_SPANISH} "${spanish}"
  LangString ${name} ${LANG_FRENCH} "${french}"
!macroend

!insertmacro Text DISPLAY_NAME "OrVane Windows Media Player Plugin" \
  "Complemento de OrVane para Windows Media Player" \
  "Plug-in OrVane pour Windows Media Player"
!insertmacro Text WELCOME \
  "This links Windows Media Player to OrVane, which cleans your music library. It will be installed here:" \
  "Esto enlaza Windows Media Player con OrVane, que limpia su biblioteca de música. Se instalará aquí:" \
  "Ceci relie Windows Media Player à OrVane, qui nettoie votre bibliothèque musicale. Installation dans :"
!insertmacro Text ORVANE_MISSING \
  "OrVane itself was not found on this computer. The plug-in can be installed now, but the player can use it only once OrVane is installed as well." \
  "No se ha encontrado OrVane en este equipo. El complemento puede instalarse ahora, pero el reproductor solo podrá usarlo cuando OrVane también esté instalado." \
  "OrVane lui-même est introuvable sur cet ordinateur. Le plug-in peut être installé maintenant, mais le lecteur ne pourra s'en servir qu'une fois OrVane installé."
!insertmacro Text FINISHED \
  "Start Windows Media Player: Tools, Plug-ins now lists OrVane." \
  "Inicie Windows Media Player: Herramientas, Complementos muestra ahora OrVane." \
  "Démarrez Windows Media Player : Outils, Plug-ins affiche maintenant OrVane."
!insertmacro Text RESTART_DUE \
  "The player is still using the previous version. It takes the new one when it is started again; the old file goes at the next restart of Windows." \
  "El reproductor aún usa la versión anterior. Tomará la nueva cuando vuelva a iniciarse; el archivo antiguo se borrará al reiniciar Windows." \
  "Le lecteur utilise encore la version précédente. Il prendra la nouvelle à son prochain démarrage ; l'ancien fichier disparaîtra au redémarrage de Windows."
!insertmacro Text PLAYER_RUNS \
  "Windows Media Player is using the plug-in. Close the player, then choose Retry.$\r$\n$\r$\nIgnore goes on without closing it: the player takes the new version when it is started again." \
  "Windows Media Player está usando el complemento. Cierre el reproductor y elija Reintentar.$\r$\n$\r$\nOmitir continúa sin cerrarlo: el reproductor tomará la nueva versión cuando vuelva a iniciarse." \
  "Windows Media Player utilise le plug-in. Fermez le lecteur, puis choisissez Réessayer.$\r$\n$\r$\nIgnorer continue sans le fermer : le lecteur prendra la nouvelle version à son prochain démarrage."
!insertmacro Text IS_OLDER \
  "Version $OldVersion is installed, which is newer than this one, ${VERSION}." \
  "Está instalada la versión $OldVersion, más reciente que esta, ${VERSION}." \
  "La version $OldVersion est installée ; elle est plus récente que celle-ci, ${VERSION}."
!insertmacro Text IS_OLDER_ASK \
  "Replace it by the older one?" "¿Reemplazarla por la más antigua?" "La remplacer par l'ancienne ?"
!insertmacro Text NEEDS_WINDOWS_7 \
  "This needs Windows 7 or later. Nothing was changed." \
  "Se necesita Windows 7 o posterior. No se ha cambiado nada." \
  "Windows 7 ou une version plus récente est nécessaire. Rien n'a été modifié."
!insertmacro Text NEEDS_RIGHTS \
  "This needs an administrator's rights: right-click it and choose 'Run as administrator'. Nothing was changed." \
  "Se necesitan derechos de administrador: haga clic con el botón derecho y elija «Ejecutar como administrador». No se ha cambiado nada." \
  "Les droits d'administrateur sont nécessaires : clic droit, puis « Exécuter en tant qu'administrateur ». Rien n'a été modifié."
!insertmacro Text ALREADY_RUNS \
  "The plug-in is being installed or removed already. Nothing was changed." \
  "El complemento ya se está instalando o quitando. No se ha cambiado nada." \
  "Le plug-in est déjà en cours d'installation ou de suppression. Rien n'a été modifié."
!insertmacro Text CANNOT_WRITE \
  "The files could not be written to $INSTDIR. Everything is as it was before." \
  "No se han podido escribir los archivos en $INSTDIR. Todo queda como estaba." \
  "Les fichiers n'ont pas pu être écrits dans $INSTDIR. Tout est resté comme avant."
!insertmacro Text CANNOT_REGISTER \
  "Windows could not register the plug-in. Everything is as it was before." \
  "Windows no ha podido registrar el complemento. Todo queda como estaba." \
  "Windows n'a pas pu enregistrer le plug-in. Tout est resté comme avant."
!insertmacro Text CANNOT_UNREGISTER \
  "Windows could not take back the plug-in's registration. Nothing else was removed." \
  "Windows no ha podido anular el registro del complemento. No se ha quitado nada más." \
  "Windows n'a pas pu annuler l'enregistrement du plug-in. Rien d'autre n'a été supprimé."
