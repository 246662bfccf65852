MSGBOX "жпнд"
