DIMa
 	 
MSGBOX"x"
